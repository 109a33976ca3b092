// Drawing a curve of 100,000 states: what is made of its points for each frame, against looking at
// each point once. Prints the ratio of both, and how many places are left to draw.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <vector>

#include "ui/fltk/ChartScale.h"

namespace {

double Seconds(const std::function<double()>& work) {
  double best = 1e9;
  double sum = 0;
  for (int round = 0; round < 50; ++round) {
    const auto start = std::chrono::steady_clock::now();
    sum += work();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    best = std::min(best, took.count());
  }
  return sum == 0.5 ? 0 : best;  // the work is not to be left out
}

}  // namespace

int main() {
  constexpr int kStates = 100000;
  constexpr int kWidth = 1000;
  constexpr int kHeight = 500;
  std::vector<double> x(kStates), y(kStates);
  for (int i = 0; i < kStates; ++i) {
    x[static_cast<std::size_t>(i)] = i * 1e-6;
    y[static_cast<std::size_t>(i)] = std::sin(i * 0.01) + 0.2 * std::sin(i * 1.7);
  }
  const ChartRange xRange = RangeOf(x);
  const ChartRange yRange = RangeOf(y);
  std::size_t places = 0;
  const double pixels = Seconds([&] {
    places = CurvePixels(x, y, xRange, yRange, kWidth, kHeight).size();
    return static_cast<double>(places);
  });
  const double nearest =
      Seconds([&] { return static_cast<double>(NearestPoint(x, y, xRange.high / 3, xRange)); });
  const double looked = Seconds([&] {
    double low = x[0] + y[0];
    for (std::size_t i = 0; i < x.size(); ++i) low = std::min(low, x[i] + y[i]);
    return low;
  });
  std::printf("pixels of a curve / one look at its points: %.1f (%zu places, %.2f ms)\n",
              pixels / looked, places, 1e3 * pixels);
  std::printf("cursor's point / one look at its points: %.1f (%.2f ms)\n", nearest / looked,
              1e3 * nearest);
}

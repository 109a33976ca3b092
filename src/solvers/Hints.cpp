#include "solvers/Hints.h"

namespace {

struct Hint {
  int first;
  int last;
  const char* text;
};

constexpr Hint kHints[] = {
    {10170, 10170, "Please check the duplicate node in the model."},
    {20444, 20444,
     "Vertical slope occurs in the loading curve. Please check the abscissa of duplicate loading "
     "curve."},
    {40045, 40045,
     "Plasticity algorithm did not converge for MAT36. Please check the material parameters in the "
     "model, or if penetration occurs in the model."},
    {40352, 40352, "Please check the solving parameters in the thermal analysis."},
    {40359, 40359,
     "Please decrease the minimum time step TMIN or increase the temperature increment DTEMP."},
    {40373, 40373, "Please check the element with zero or negative Jacobian in the model."},
    {40500, 40500,
     "The node velocity is out of range. Please reduce the loading velocity, pressure or time "
     "step. Please check if the penetration occurs in the model."},
    {40575, 40576, "Please check if penetration occurs in the contact interface."},
    {60004, 60004, "Nonlinear solving did not converge. Please check the solver parameters."},
};

}  // namespace

bool LookUpHint(int number, std::string& hint) {
  for (const Hint& row : kHints) {
    if (number < row.first || number > row.last) continue;
    hint = row.text;
    return true;
  }
  return false;
}

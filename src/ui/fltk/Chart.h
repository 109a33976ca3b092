// Curves over an axis, to be read and zoomed.
#ifndef KR_UI_FLTK_CHART_H
#define KR_UI_FLTK_CHART_H

#include <FL/Fl_Widget.H>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ui/fltk/ChartScale.h"

using ChartValues = std::shared_ptr<const std::vector<double>>;

struct ChartCurve {
  std::string name;
  Fl_Color color = 0;
  ChartValues x, y;  // never null; as many of both
  // Something to go by beside what was measured: dashed, and the cursor does not read it.
  bool isGuide = false;
};

struct ChartAxis {
  std::string name;      // with its unit
  std::string quantity;  // without
  bool isClock = false;  // seconds, shown as hours and minutes
};

// Texts are UTF-8. A legend switches curves on and off, the mouse reads values, dragging zooms in,
// a right click or Backspace goes one step back, a double click or Escape all the way. With the
// focus the digits switch curves too. Draws only what the pixels can show, however many points
// there are. Interface thread.
class Chart : public Fl_Widget {
 public:
  // What stands on the small buttons in its corner, and their tips.
  struct Texts {
    std::string whole, wholeTip, enlargeTip;
  };
  Chart(const std::string& title, const Texts& texts);

  // A chart over another axis shows all of it.
  void SetAxes(const ChartAxis& x, const ChartAxis& y);
  // Curves keep by their names whether they are shown.
  void SetCurves(std::vector<ChartCurve> curves);
  // Stands in the place of the curves while there are none.
  void SetHint(const std::string& hint);

  std::function<void()> OnEnlarge;

  void draw() override;
  int handle(int event) override;

 private:
  struct Shown {
    ChartCurve curve;
    bool on = true;
    ChartRange x, y;                 // of its points that have a place
    std::vector<ChartPixel> pixels;  // within the plot
  };
  struct Area {
    int x = 0, y = 0, w = 0, h = 0;
    bool Has(int px, int py) const { return px >= x && px < x + w && py >= y && py < y + h; }
    bool operator==(const Area&) const = default;
  };
  // What the pixels of the curves were made for.
  struct Made {
    Area plot;
    ChartZoom::View view;
    bool operator==(const Made&) const = default;
  };

  bool HasPoints() const;
  ChartZoom::View View() const;
  std::string Caption(const ChartAxis& axis, int exponent) const;
  void PlaceParts();
  void PlaceLegend();
  void MakePixels();
  void DrawHead();
  void DrawLegend();
  void DrawAxes();
  void DrawCurves();
  // The point of each curve that is nearest to the place; `nearest` is the place of the nearest of
  // them, as it was when there is none.
  struct Pointed {
    Fl_Color color;
    std::string name, value;
    double x, y;
  };
  std::vector<Pointed> PointedAt(double at, double& nearest) const;
  void DrawCursor();
  void DrawValues(const std::vector<Pointed>& all, const std::string& place, int hair);
  void DrawZoomFrame();
  void DrawButton(const Area& area, const std::string& label, bool hovered);
  int HandlePush();
  int HandleRelease();
  int HandleKey();
  void Point(bool inside);  // the mouse is there now
  void Switch(std::size_t curve);
  void Changed();
  double ValueAtX(int px) const;
  double ValueAtY(int py) const;

  const std::string title_;
  const Texts texts_;
  ChartAxis xAxis_, yAxis_;
  std::string hint_;
  std::vector<Shown> curves_;
  ChartZoom zoom_;

  // As drawn last.
  Area plot_, wholeButton_, enlargeButton_;
  std::vector<Area> legend_;  // of each curve
  ChartTicks xTicks_, yTicks_;
  Made made_;
  bool isMade_ = false;

  bool isPointed_ = false;
  int pointX_ = 0, pointY_ = 0;
  bool isZooming_ = false;
  int zoomX_ = 0, zoomY_ = 0;  // where the drag began
};

#endif

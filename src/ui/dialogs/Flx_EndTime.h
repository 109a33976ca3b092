// Asks for a new end time of a run.
#ifndef KR_UI_DIALOGS_FLX_ENDTIME_H
#define KR_UI_DIALOGS_FLX_ENDTIME_H

#include <optional>

#include "ui/dialogs/Flx_Base_Dialog.h"

class Fl_Box;
class Fl_Button;
class Fl_Input;

// Problem times are in the deck's unit; those that are not known are empty.
class Flx_EndTime : public Flx_Base_Dialog {
 public:
  // The widgets by their ids in the layout.
  static constexpr WidgetName<Fl_Box> kNow{"ID_LABEL1"}, kWrong{"ID_LABEL3"};
  static constexpr WidgetName<Fl_Input> kTime{"ID_INPUT1"};
  static constexpr WidgetName<Fl_Button> kSet{"ID_BUTTON1"}, kCancel{"ID_BUTTON2"};

  Flx_EndTime(Fl_Window* parent, int language, std::optional<double> now,
              std::optional<double> endTime);

  bool Initialise() override;
  int HandleWidget(Fl_Widget* widget) override;

  // Empty when the dialog was cancelled.
  std::optional<double> NewEndTime() const { return newEndTime_; }

 private:
  const std::optional<double> now_, endTime_;
  std::optional<double> newEndTime_;
};

#endif

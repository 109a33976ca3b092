#include "ui/dialogs/Flx_EndTime.h"

#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Input.H>

#include <cmath>
#include <cstdio>
#include <string>

#include "util/text/PlainText.h"

namespace {

const char kLayout[] =
    R"(ID_WINDOW,Window,"New End Time",901,479,380,148,1,1,49,49,1,0,14,56,1,99,"",0,0,0,0,"新终止时间"
ID_LABEL1,Box,"",12,8,356,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0
ID_LABEL2,Box,"The run ends at:",12,38,140,24,0,0,49,49,0,0,12,56,20,99,"",0,0,0,0,"计算终止于："
ID_INPUT1,Input,"",160,38,200,24,3,3,7,15,0,0,12,56,4,99,"",0,0,14,0
ID_LABEL3,Box,"",12,68,356,36,0,0,49,49,0,0,12,56,148,99,"",0,0,0,0
ID_BUTTON1,Button,"Set",192,112,80,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0,"设置"
ID_BUTTON2,Button,"Cancel",280,112,80,24,2,3,49,49,0,0,12,56,0,99,"",0,0,0,0,"取消"
)";

// By key, in English and Chinese.
constexpr DialogText kTexts[] = {
    {"now", "Problem time now: ", "当前计算时间："},
    {"ends", ", it ends at: ", "，终止于："},
    {"unknown", "not known", "未知"},
    {"meaning", "In the unit of the deck. The solver takes it with its next cycle or step.",
     "单位与关键字文件相同，求解器在下一个循环或步采用。"},
    {"wrong", "This is no number above the problem time of now.", "应为大于当前计算时间的数。"},
};

std::string Number(double value) {
  char text[40];
  std::snprintf(text, sizeof text, "%.6g", value);
  return text;
}

}  // namespace

Flx_EndTime::Flx_EndTime(Fl_Window* parent, int language, std::optional<double> now,
                         std::optional<double> endTime)
    : Flx_Base_Dialog(parent, language, kLayout, kTexts), now_(now), endTime_(endTime) {}

bool Flx_EndTime::Initialise() {
  if (!HasAll(kNow, kWrong) || !HasAll(kSet, kCancel) || !Find(kTime)) return false;
  const auto shown = [&](std::optional<double> time) {
    return time ? Number(*time) : Shown("unknown");
  };
  ShowLabel(*Find(kNow), Shown("now") + shown(now_) + Shown("ends") + shown(endTime_));
  ShowLabel(*Find(kWrong), Shown("meaning"));
  Fl_Input* input = Find(kTime);
  if (endTime_) input->value(Number(*endTime_).c_str());
  Present(*Find(kSet), *input);
  return true;
}

int Flx_EndTime::HandleWidget(Fl_Widget* widget) {
  if (widget == Find(kCancel)) return 0;
  if (widget != Find(kSet)) return -1;
  const std::optional<double> time = AnyNumber(Trimmed(Find(kTime)->value()));
  if (!time || !std::isfinite(*time) || *time <= now_.value_or(0)) {
    ShowLabel(*Find(kWrong), Shown("wrong"));
    Find(kTime)->take_focus();
    return -1;
  }
  newEndTime_ = time;
  return 0;
}

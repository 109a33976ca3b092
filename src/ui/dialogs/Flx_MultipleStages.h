// The stages of a multi-stage job: what becomes of them, and changing them while the job waits.
#ifndef KR_UI_DIALOGS_FLX_MULTIPLESTAGES_H
#define KR_UI_DIALOGS_FLX_MULTIPLESTAGES_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/Application.h"
#include "ui/dialogs/Flx_Base_Dialog.h"
#include "ui/dialogs/StageTable.h"
#include "ui/fltk/ChoiceEntries.h"
#include "ui/text/TextTable.h"

class Fl_Box;
class Fl_Button;
class Fl_Choice;

// Stages are added, removed and moved while the job is Queued; the first one to run is chosen at
// any time but during a run. Follows the run.
class Flx_MultipleStages : public Flx_Base_Dialog {
 public:
  // The widgets by their ids in the layout.
  static constexpr WidgetName<Fl_Box> kDeck{"ID_LABEL1"}, kFirstStageLabel{"ID_LABEL2"},
      kHint{"ID_LABEL3"};
  static constexpr WidgetName<Fl_Group> kTable{"ID_GROUP1"};  // the place of the table
  static constexpr WidgetName<Fl_Choice> kFirstStage{"ID_CHOICE1"};
  static constexpr WidgetName<Fl_Button> kAdd{"ID_BUTTON1"}, kRemove{"ID_BUTTON2"},
      kMoveUp{"ID_BUTTON3"}, kMoveDown{"ID_BUTTON4"}, kViewMessage{"ID_BUTTON5"},
      kViewSummary{"ID_BUTTON6"}, kClose{"ID_BUTTON7"};

  struct Subject {
    Application& application;
    const TextTable& texts;  // of the main window
    std::shared_ptr<JobGroup> group;
    JobId job;
  };

  Flx_MultipleStages(Fl_Window* parent, int language, Subject subject);
  ~Flx_MultipleStages() override;

  bool Initialise() override;
  int HandleWidget(Fl_Widget* widget) override;
  void QueueChanged() override;
  void RunsLookedAt() override { table_->redraw(); }

 private:
  void MakeTable();
  bool Read(const std::function<void(const JobFile& job)>& read) const;
  void Update();
  static void UpdateLater(void* self);
  void ShowFirstStage(const std::vector<std::string>& names, int first);
  void AddStages();
  void RemoveStage();
  void MoveStage(bool up);
  void ViewMessage(JobId stage);
  void ViewSummary(JobId stage);
  void Inform(const std::string& text);

  const Subject subject_;
  StageTable* table_ = nullptr;
  ChoiceEntries firstEntries_;
  std::vector<std::string> names_;  // of the stages, as the choice shows them
};

#endif

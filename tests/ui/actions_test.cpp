// What the main window does at the press of a tool or key: questions, messages and what comes of
// them.

#include "ui/WindowFixture.h"

#include <FL/Fl_Button.H>
#include <FL/Fl_File_Input.H>
#include <FL/Fl_Return_Button.H>

#include "ui/help/TextViewer.h"
#include "ui/window/Layout.h"

namespace {

using Lines = std::vector<std::string>;

class ActionsTest : public WindowTest {
 protected:
  using WindowTest::WindowTest;

  Lines Column(int column) {
    Lines cells;
    for (std::string row : Rows()) {
      for (int before = 0; before < column; ++before) row.erase(0, row.find('|') + 1);
      cells.push_back(row.substr(0, row.find('|')));
    }
    return cells;
  }
  Lines Names() { return Column(JobTable::kName); }
  Lines Statuses() { return Column(JobTable::kStatus); }
  std::string FolderOf(const std::string& deck) { return deck.substr(0, deck.rfind('/')); }
  bool Began(const std::string& deck) {
    return Until([&] { return std::filesystem::exists(FolderOf(deck) + "/messag"); });
  }
  // Presses a key that opens a box, and a button in it; what the box says.
  std::string AnswerToKey(int key, int state, const char* button) {
    return OnOneLine(Answer([&] { PressKey(key, state); }, button));
  }
  std::string AnswerToTool(const char* tip, const char* button) {
    return OnOneLine(Answer([&] { PressTool(tip); }, button));
  }
  static std::string OnOneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
  }
  void RenameTo(Fl_Window& dialog, const std::string& name) {
    TypeInto(Find<Fl_Input>(dialog), name);
    Press(Find<Fl_Button>(dialog, "OK"));
  }
};

TEST_F(ActionsTest, DeletingAsks) {
  AddJob("dropped");
  AddJob("kept");
  EXPECT_EQ(AnswerToKey(FL_Delete, 0, "OK"), Say("msg_no_cur_job"));
  PressKey(FL_Home);
  EXPECT_EQ(AnswerToKey(FL_Delete, 0, "Yes"), Say("msg_ask_del"));
  EXPECT_EQ(AnswerToTool("tip_delete_job", "No"), Say("msg_ask_del"));
  EXPECT_EQ(Names(), Lines{"kept.k"});
}

TEST_F(ActionsTest, JobsAreMovedUpAndDown) {
  for (const char* name : {"/w/1.k", "/w/2.k", "/w/3.k"}) Add(MakeJob<JobFileDyna>(name));
  PressKey(FL_Home);
  PressKey(FL_Up, FL_CTRL);
  EXPECT_TRUE(LineSays(Say("ui_not_moved")));
  PressKey(FL_Down, FL_CTRL);
  EXPECT_EQ(Names(), (Lines{"2.k", "1.k", "3.k"}));
  PressCell(Table(), 2, "Solver");
  PressTool("tip_move_up");
  PressTool("tip_move_up");
  EXPECT_EQ(Names(), (Lines{"3.k", "2.k", "1.k"}));
  EXPECT_EQ(Table().CurrentRow(), 0) << "the job stays the current one";
  JobIn(*Group(), Table().CurrentJob())->status = JobStatus::kFinished;
  PressTool("tip_move_down");
  EXPECT_TRUE(LineSays("Only Queued jobs can be moved."));
  PressCell(Table(), 1, "Solver");
  PressTool("tip_move_up");
  EXPECT_TRUE(LineSays("A job cannot move above one that is not Queued."));
  EXPECT_EQ(Names(), (Lines{"3.k", "2.k", "1.k"}));
}

TEST_F(ActionsTest, StopEndsTheRunningJobOnly) {
  const std::string running = AddJob("running", "run 60");
  const std::string queued = AddJob("queued", "run 60");
  PressKey('.', FL_CTRL);
  EXPECT_TRUE(LineSays(Say("ui_nothing_runs")));
  PressKey(FL_Enter, FL_CTRL);
  ASSERT_TRUE(Began(running));
  EXPECT_EQ(Statuses()[0], "Running");
  const auto job = JobIn(*Group(), Group()->ActiveJob());
  job->Enter(JobStatus::kRunning, job->started - 7 * 3600 - 12 * 60);
  const std::string loss = window_->Texts().Format("ui_has_run", "running.k", "7 h 12 min") + " " +
                           Say("ui_stop_loses") + " ";
  for (const int key : {FL_Enter, FL_Escape}) {
    Talk([&] { PressKey('.', FL_CTRL); }, {[&](Fl_Window& box) { Key(box, key); }});
    EXPECT_TRUE(Group()->Running());
  }
  PressKey(FL_Home);
  for (const char* tool : {"tip_delete_job", "tip_delete_all", "tip_del_group"}) {
    if (tool == std::string("tip_del_group")) application_->Manager().AddGroup("other");
    window_->Perform(Action::kRefresh);
    std::string told;
    Talk([&] { PressTool(tool); }, {[&](Fl_Window& box) {
           told = Drawing(box).Text(box);
           Key(box, FL_Enter);
         }});
    EXPECT_TRUE(told.starts_with("running.k has run for 7 h 12 min. If it is")) << told;
    EXPECT_NE(told.find("Really delete"), std::string::npos) << told;
    EXPECT_TRUE(Group()->Running()) << tool;
    EXPECT_EQ(Group()->JobCount(), 2) << tool;
  }
  PressKey(FL_Down);
  EXPECT_EQ(AnswerToTool("tip_delete_job", "No"), Say("msg_ask_del")) << "this one does not run";
  EXPECT_EQ(AnswerToKey('.', FL_CTRL, "Yes"), loss + Say("ui_ask_stop"));
  EXPECT_FALSE(Group()->Running());
  EXPECT_EQ(Statuses(), (Lines{"Aborted \xC2\xB7 stopped by you", "Queued"}));

  // Once more, until all are deleted.
  PressKey(FL_Home);
  PressKey('r', FL_CTRL);
  std::filesystem::remove(FolderOf(running) + "/messag");
  PressKey(FL_Enter, FL_CTRL);
  ASSERT_TRUE(Began(running));
  AnswerToTool("tip_delete_all", "No");
  EXPECT_TRUE(Group()->Running());
  // The next one begins while the question is open, which is not asked again.
  Talk([&] { PressTool("tip_delete_all"); }, {[&](Fl_Window& box) {
         std::ofstream(FolderOf(running) + "/request") << "sw1\n";
         std::filesystem::rename(FolderOf(running) + "/request", FolderOf(running) + "/d3kil");
         EXPECT_TRUE(Began(queued));
         Press(Find<Fl_Button>(box, "Yes"));
       }});
  EXPECT_FALSE(Group()->Running());
  EXPECT_EQ(Group()->JobCount(), 0);
  EXPECT_FALSE(Tool("tip_delete_all").active());
}

TEST_F(ActionsTest, KeysBelongToTheWindowThatHasThem) {
  const std::string deck = AddJob("running", "run 60");
  PressKey(FL_Home);
  PressKey(FL_Enter, FL_CTRL);
  ASSERT_TRUE(Began(deck));
  const JobFile* const job = JobIn(*Group(), Group()->ActiveJob());
  ASSERT_TRUE(Until([&] { return !job->MessageFile().empty(); }));
  PressKey('m', FL_CTRL);
  auto* viewer = dynamic_cast<TextViewer*>(Fl::first_window());
  ASSERT_TRUE(viewer);
  const auto keyOverTheMainWindow = [&](int key, int state = 0) {
    MoveTo(*window_, window_->w() / 2, window_->h() / 2);
    ASSERT_EQ(Fl::belowmouse()->top_window(), window_.get());
    Key(*viewer, key, state);
    Fl::check();
  };
  keyOverTheMainWindow('t', FL_CTRL);
  EXPECT_EQ(application_->Manager().GroupCount(), 1);
  std::ofstream(job->MessageFile(), std::ios::app) << "appended";
  keyOverTheMainWindow(FL_F + 5);
  EXPECT_NE(Drawing(*viewer).Text(*viewer).find("appended"), std::string::npos);
  keyOverTheMainWindow(FL_Escape);
  EXPECT_FALSE(dynamic_cast<TextViewer*>(Fl::first_window())) << "Escape closes its own window";
  EXPECT_TRUE(window_->shown());
  PressKey('t', FL_CTRL);
  EXPECT_EQ(application_->Manager().GroupCount(), 2);
}

TEST_F(ActionsTest, LeavingAsksWhileAJobRuns) {
  const std::string deck = AddJob("long", "run 60");
  PressKey(FL_Enter, FL_CTRL);
  ASSERT_TRUE(Began(deck));
  PressKey('t', FL_CTRL);
  const std::string second = AddJob("second", "run 60");
  PressKey(FL_Enter, FL_CTRL);
  ASSERT_TRUE(Began(second));
  AddJob("queued");
  for (int group : {0, 1}) {
    const auto jobs = application_->Manager().GroupAt(group);
    const auto job = JobIn(*jobs, jobs->ActiveJob());
    job->Enter(JobStatus::kRunning, job->started - 3600);
  }
  const auto ran = [&](const char* name) {
    return window_->Texts().Format("ui_has_run", name, "1 h") + " ";
  };
  const std::string asked = Answer([&] { PressKey('q', FL_CTRL); }, "No");
  EXPECT_EQ(OnOneLine(asked), ran("long.k") + ran("second.k") + Say("ui_stop_loses_all") + " " +
                                  window_->Texts().Format("ui_exit_offered", "1") + " " +
                                  Say("msg_ask_exit"));
  EXPECT_NE(asked.find("\n" + Say("msg_ask_exit")), std::string::npos) << asked;
  Talk([&] { PressKey('q', FL_CTRL); }, {[](Fl_Window& box) { Key(box, FL_Enter); }});
  EXPECT_TRUE(window_->shown());
  EXPECT_TRUE(Group()->Running());
  AnswerToKey('q', FL_CTRL, "Yes");
  EXPECT_FALSE(window_->shown());
  EXPECT_FALSE(Group()->Running());
}

// What was pressed just before must not open a box that nobody would answer.
TEST_F(ActionsTest, NothingOpensWhenTheProgramIsToldToEnd) {
  Talk([&] { PressTool("tip_config"); }, {[&](Fl_Window& dialog) {
         auto& language = Find<Fl_Choice>(dialog);
         language.value(1);
         language.do_callback();  // puts it before the dialog, with its next look
         window_->Leave();
       }});
  EXPECT_EQ(Stored().language, 1);
  EXPECT_EQ(Fl::first_window(), nullptr);
}

TEST_F(ActionsTest, GroupsAreAddedRenamedDeletedAndKept) {
  EXPECT_FALSE(Tool("tip_del_group").active()) << "the only one stays";
  Talk([&] { PressKey(FL_F + 2); }, {[&](Fl_Window& dialog) { RenameTo(dialog, "Door panels"); }});
  PressKey('t', FL_CTRL);  // the second one is Group1 again
  PressKey('t', FL_CTRL);
  EXPECT_EQ(Drawing(*window_).Text(Part<GroupTabs>()), "Door panels Group1 Group2");
  const std::pair<std::string, std::string> refused[] = {
      {"Door panels", Say("msg_name_exist")},
      {"#1", "a name cannot begin with \"#\"."},
      {"a=b", "a name cannot hold \"=\"."},
      {"  ", "a name cannot consist of blanks only."},
      {std::string(3000, 'x'), "it has 3000 characters, the most are 60."},
  };
  for (const auto& [name, why] : refused) {
    std::string told;
    Talk([&] { PressTool("tip_rename_group"); },
         {[&, name = name](Fl_Window& dialog) { RenameTo(dialog, name); },
          [&](Fl_Window& box) {
            told = Drawing(box).Text(box);
            Key(box, FL_Enter);
          },
          [&, name = name](Fl_Window& dialog) {
            EXPECT_EQ(Find<Fl_Input>(dialog).value(), name) << "to be mended";
            Key(dialog, FL_Escape);
          }});
    EXPECT_NE(told.find(why), std::string::npos) << told;
  }
  Talk([&] { Press(Part<GroupTabs>(), "Door panels", FL_LEFT_MOUSE, true); },
       {[&](Fl_Window& dialog) { RenameTo(dialog, "Door panels 2"); }});
  PressKey(FL_Tab, FL_CTRL);
  EXPECT_EQ(AnswerToTool("tip_del_group", "No"), Say("msg_ask_del_group"));
  AnswerToTool("tip_del_group", "Yes");
  EXPECT_EQ(Close(), 0);
  Start();
  EXPECT_EQ(Drawing(*window_).Text(Part<GroupTabs>()), "Door panels 2 Group2");
}

TEST_F(ActionsTest, OutputIsShownOnceThereIsSome) {
  AddJob("shown");
  EXPECT_EQ(AnswerToKey('m', FL_CTRL, "OK"), Say("msg_no_cur_job"));
  PressKey(FL_Home);
  EXPECT_EQ(AnswerToKey('m', FL_CTRL, "OK"), Say("msg_view_job"));
  EXPECT_EQ(AnswerToKey('i', FL_CTRL, "OK"), Say("msg_view_info"));
  EXPECT_EQ(AnswerToKey('e', FL_CTRL, "OK"), Say("msg_not_mstages"));
  EXPECT_EQ(AnswerToKey('r', FL_CTRL, "OK"), Say("msg_resubmit"));
  Run();
  PressKey('m', FL_CTRL);
  auto* viewer = dynamic_cast<TextViewer*>(Fl::first_window());
  ASSERT_TRUE(viewer);
  EXPECT_NE(std::string(viewer->label()).find("/messag.krb"), std::string::npos);
  Key(*viewer, FL_Escape);
  Fl::check();
  for (const int key : {FL_Enter, FL_Escape}) {
    Talk([&] { PressTool("ui_menu_info"); }, {[&](Fl_Window& dialog) {
           EXPECT_STREQ(dialog.label(), "Show Job Information");
           Key(dialog, key);
         }});
  }
  PressKey(FL_Escape);
  EXPECT_TRUE(window_->shown()) << "Escape closes no main window";
  PressKey(FL_Home);
  PressKey('r', FL_CTRL);
  EXPECT_EQ(Statuses(), Lines{"Queued"});
}

TEST_F(ActionsTest, ThePostProcessorOpensTheResultOfAJobThatHasEnded) {
  const std::string opened = home_ / "opened";
  const std::string program =
      home_.WriteProgram("my post.sh", "#!/bin/sh\nprintf '%s' \"$1\" > '" + opened +
                                           ".new'\nmv '" + opened + ".new' '" + opened + "'\n");
  Files().Set(&Settings::post_processor, program);
  const std::string deck = AddJob("shown");
  EXPECT_EQ(AnswerToTool("tip_run_post", "OK"), Say("msg_no_cur_job"));
  PressKey(FL_Down);  // a pressed tool leaves the keys to the table
  EXPECT_EQ(AnswerToTool("tip_run_post", "OK"), Say("msg_run_post"));
  Run();
  const std::string result = FolderOf(deck) + "/d3plot";
  std::filesystem::remove(result);
  AnswerToTool("tip_run_post", "OK");
  EXPECT_FALSE(std::filesystem::exists(opened));
  std::ofstream(result) << "plot";
  PressTool("tip_run_post");
  EXPECT_TRUE(Until([&] { return std::filesystem::exists(opened); }));
  EXPECT_EQ(TempFolder::Read(opened), result);

  Files().Set(&Settings::post_processor, home_ / "no such program");
  PressTool("tip_run_post");
  EXPECT_TRUE(LineSays("Post-processor [" + home_ / "no such program" + "] does not exist"));
  EXPECT_TRUE(LineSays("post_processor in the settings file"));
}

TEST_F(ActionsTest, EveryWayOutOfADialogStoresWhatIsTyped) {
  struct Way {
    std::string name;
    std::function<void(Fl_Window&)> leave;
  };
  const Way ways[] = {
      {"cross", [](Fl_Window& dialog) { Fl::handle(FL_CLOSE, &dialog); }},
      {"escape", [](Fl_Window& dialog) { Key(dialog, FL_Escape); }},
      {"button", [](Fl_Window& dialog) { Press(Find<Fl_Button>(dialog, "Close")); }},
      {"enter", [](Fl_Window& dialog) { Key(dialog, FL_Enter); }},
      {"end", [](Fl_Window& dialog) { dialog.hide(); }},
  };
  for (const Way& way : ways) {
    const auto typeAndLeave = [&](const char* label) {
      return [&, label](Fl_Window& dialog) {
        Fl_Input& input = Beside<Fl_Input>(dialog, label);
        input.take_focus();
        input.position(input.size(), 0);
        Key(dialog, way.name.front(), 0, way.name);
        way.leave(dialog);
      };
    };
    Talk([&] { window_->Perform(Action::kMppSettings); }, {typeAndLeave("MPI Param")});
    EXPECT_EQ(Stored().mpi_param, way.name);
    Talk([&] { window_->Perform(Action::kConfig); }, {typeAndLeave("Text Editor")});
    EXPECT_EQ(Stored().viewer, way.name);
  }
}

TEST_F(ActionsTest, FilesAreChosen) {
  const std::string deck = MakeDeck("chosen"), other = MakeDeck("in_folder");
  home_.Write("one step", "");
  const auto choose = [&](const std::string& path) {
    return [&, path](Fl_Window& chooser) {
      EXPECT_NEAR(chooser.x() + chooser.w() / 2, window_->x() + window_->w() / 2, 1);
      Fl_File_Input& name = Find<Fl_File_Input>(chooser);
      name.take_focus();
      name.value(path.c_str());
      name.do_callback();
      Key(chooser, FL_Enter);
    };
  };
  Talk([&] { PressKey('o', FL_CTRL); }, {choose(deck)});
  Talk([&] { PressTool("tip_addvorel"); }, {choose(home_ / "one step")});
  Talk([&] { PressKey('o', FL_CTRL | FL_SHIFT); },
       {choose(FolderOf(other)), [&](Fl_Window& chooser) { Key(chooser, FL_Enter); }});
  Talk([&] { PressTool("tip_adddyn"); }, {[&](Fl_Window& chooser) { Key(chooser, FL_Escape); }});
  application_->Intake().Drain();
  EXPECT_TRUE(Until([&] { return Names() == Lines{"chosen.k", "one step", "in_folder.k"}; }));
  EXPECT_EQ(Column(JobTable::kSolver)[1], "VOREL") << "also without an ending";
  PressKey(' ');  // the keys are the table's again
  EXPECT_EQ(Fl::modal(), nullptr);
}

class ChineseActions : public ActionsTest {
 protected:
  ChineseActions() : ActionsTest(1) {}
};

TEST_F(ChineseActions, AGroupNameHasSixtyCharactersOfAnyLanguage) {
  std::string name, told;
  for (int i = 0; i < 60; ++i) name += "组";
  Talk([&] { PressKey(FL_F + 2); }, {[&](Fl_Window& dialog) {
                                       TypeInto(Find<Fl_Input>(dialog), name + "组");
                                       Key(dialog, FL_Enter);
                                     },
                                     [&](Fl_Window& box) {
                                       told = Drawing(box).Text(box);
                                       Key(box, FL_Enter);
                                     },
                                     [&](Fl_Window& dialog) {
                                       TypeInto(Find<Fl_Input>(dialog), name);
                                       Key(dialog, FL_Enter);
                                     }});
  EXPECT_NE(told.find("61"), std::string::npos) << told;
  EXPECT_EQ(Group()->Name(), name);
}

TEST_F(ActionsTest, OneSolversWindowAddsNothingElse) {
  Start({"#solver=inc"});
  EXPECT_FALSE(Tool("tip_adddyn").active());
  EXPECT_TRUE(Tool("tip_addinc").active());
  PressKey('o', FL_CTRL);
  EXPECT_EQ(Fl::modal(), nullptr);
  EXPECT_NE(Drawing(*window_).Text(Table()).find(Say("ui_empty_hint_drop")), std::string::npos);
}

TEST_F(ActionsTest, EverySizeShowsAllSettings) {
  AddJob("sized");
  for (const auto& [width, height] :
       {std::pair{Layout::kMinWidth, Layout::kMinHeight}, std::pair{939, 760}, std::pair{940, 320},
        std::pair{1590, 990}}) {
    window_->size(width, height);
    PressKey('t', FL_CTRL);
    PressKey(FL_Tab, FL_CTRL);
    std::vector<Fl_Widget*> settings = WidgetsOf(Part<SettingsRow>());
    for (const Fl_Widget* one : settings) {
      EXPECT_LE(one->x() + one->w(), width);
      for (const Fl_Widget* other : settings) {
        const bool apart = one->x() + one->w() <= other->x() ||
                           other->x() + other->w() <= one->x() ||
                           one->y() + one->h() <= other->y() || other->y() + other->h() <= one->y();
        EXPECT_TRUE(apart || one == other) << width << " " << settings.size();
      }
    }
    EXPECT_EQ(Line(), "1 job: 1 queued");
  }
}

}  // namespace

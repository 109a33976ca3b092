// The dialogs, opened from the main window: what they show and what they store.

#include "ui/WindowFixture.h"

#include <FL/Fl_Browser.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Check_Button.H>
#include <FL/Fl_Choice.H>
#include <FL/Fl_Scroll.H>

#include "ui/dialogs/StageTable.h"
#include "ui/help/TextViewer.h"

namespace {

using Lines = std::vector<std::string>;

class DialogsTest : public WindowTest {
 protected:
  void OpenMpp(const std::vector<Step>& steps) {
    Talk([&] { Press(Part<StateButton>()); }, steps);
  }
  static void Close(Fl_Window& dialog) { Press(Find<Fl_Button>(dialog, "Close")); }
  static void Confirm(Fl_Window& box) { Key(box, FL_Enter); }

  std::string Hosts() { return TempFolder::Read(Files().hostFile); }
  // The fields of the host rows, name and CPUs in turn.
  static std::vector<Fl_Input*> HostFields(Fl_Window& dialog) {
    return All<Fl_Input>(Find<Fl_Scroll>(dialog));
  }
  static std::string HostTexts(Fl_Window& dialog) {
    return Drawing(dialog).Text(Find<Fl_Scroll>(dialog));
  }
  static bool IsRed(const Fl_Input& field) { return field.textcolor() == Theme::kError; }
  std::string Log() { return TempFolder::Read(Files().Log().Path()); }
};

TEST_F(DialogsTest, MppSettingsAreStoredAsTheyAreMade) {
  OpenMpp({[](Fl_Window& dialog) {
             Press(Find<Fl_Check_Button>(dialog, "Use MPP"));
             Choose(Find<Fl_Choice>(dialog), "IBM Platform MPI");
             TypeInto(Beside<Fl_Input>(dialog, "Memory2 (MB)"), "512 MB");
             TypeInto(Beside<Fl_Input>(dialog, "MPI Param"), "envall");
             TypeInto(Beside<Fl_Input>(dialog, "MPP Param"), "p=pfile");
             TypeInto(Beside<Fl_Input>(dialog, "MPP Solver(s)"), "\"/opt/ls dyna/mpp_s\"");
             TypeInto(Beside<Fl_Input>(dialog, "MPP Solver(d)"), "/opt/mpp_d");
           },
           [](Fl_Window& dialog) {
             EXPECT_STREQ(Beside<Fl_Input>(dialog, "Memory2 (MB)").value(), "512");
             Close(dialog);
           }});
  EXPECT_TRUE(Stored().use_mpp);
  EXPECT_EQ(Stored().mpi, 3);
  EXPECT_EQ(Stored().memory2, 512U);
  EXPECT_EQ(Stored().mpi_param, "envall");
  EXPECT_EQ(Stored().mpp_param, "p=pfile");
  EXPECT_EQ(Stored().mpp_solver_s, "/opt/ls dyna/mpp_s");
  EXPECT_EQ(Stored().mpp_solver_d, "/opt/mpp_d");
  EXPECT_EQ(Drawing(*window_).Text(Part<StateButton>()), "MPP: IBM Platform MPI");
  OpenMpp({[](Fl_Window& dialog) {
    EXPECT_STREQ(Find<Fl_Choice>(dialog).text(), "IBM Platform MPI");
    EXPECT_STREQ(Beside<Fl_Input>(dialog, "MPP Param").value(), "p=pfile");
    EXPECT_STREQ(Beside<Fl_Input>(dialog, "MPP Solver(d)").value(), "/opt/mpp_d");
    Close(dialog);
  }});
}

TEST_F(DialogsTest, HostsAreCheckedAndStored) {
  const auto write = [&](const std::string& text) { std::ofstream(Files().hostFile) << text; };
  const auto reload = [](Fl_Window& dialog) { Press(Find<Fl_Button>(dialog, "Reload Host File")); };
  write("# mine\nnode1 4\n# spare\nnode2 8\n");
  OpenMpp(
      {reload,
       [&](Fl_Window& dialog) {
         EXPECT_EQ(HostTexts(dialog),
                   "Host CPUs Group uses node1 4 4 - node2 8 8 - Add Host The group uses the CPUs "
                   "of the table.");
         TypeInto(*HostFields(dialog)[1], "16");
         EXPECT_EQ(Hosts(), "# mine\nnode1               16\n# spare\nnode2 8\n");
         TypeInto(*HostFields(dialog)[3], "many");
         EXPECT_TRUE(IsRed(*HostFields(dialog)[3]));
         EXPECT_NE(std::string(HostFields(dialog)[3]->tooltip()).find("whole number"),
                   std::string::npos);
         TypeInto(*HostFields(dialog)[3], "0");
         EXPECT_FALSE(IsRed(*HostFields(dialog)[3]));
         EXPECT_NE(HostTexts(dialog).find("node2 0 not used -"), std::string::npos);

         Press(Find<Fl_Button>(dialog, "Add Host"));
         TypeInto(*HostFields(dialog)[4], "two words");
         EXPECT_TRUE(IsRed(*HostFields(dialog)[4]));
         EXPECT_EQ(Hosts().find("two"), std::string::npos);
         TypeInto(*HostFields(dialog)[4], "node3");
         EXPECT_EQ(Hosts().substr(Hosts().rfind("node")), "node3               1\n");
         Press(Find<Fl_Button>(dialog, "-"));
         EXPECT_EQ(Hosts().find("node1"), std::string::npos);
       },
       [&](Fl_Window& dialog) {
         write("node9 2\n");
         TypeInto(*HostFields(dialog)[1], "5");
       },
       [&](Fl_Window& dialog) {
         EXPECT_NE(HostTexts(dialog).find("node9 2 2 - Add Host The host file has been changed"),
                   std::string::npos)
             << HostTexts(dialog);
         EXPECT_EQ(Hosts(), "node9 2\n");
         Close(dialog);
       }});
}

// Opens the host file in the window's editor, goes through the steps and closes the dialog.
class HostFileTest : public DialogsTest {
 protected:
  void EditHosts(const std::string& bytes, std::vector<Step> steps) {
    std::ofstream(Files().hostFile, std::ios::binary) << bytes;
    steps.insert(steps.begin(),
                 [](Fl_Window& dialog) { Press(Find<Fl_Button>(dialog, "Edit Host File...")); });
    steps.push_back(Close);
    OpenMpp(steps);
  }
  static void TypeLine(Fl_Window& editor) {
    Key(editor, 'n', 0, "n");
    Key(editor, FL_Enter);
  }
  static void Save(Fl_Window& editor) { Key(editor, 's', FL_CTRL); }
  static void Leave(Fl_Window& editor) { Key(editor, FL_Escape); }
  static Step Answering(const char* button) {
    return [button](Fl_Window& box) { Press(Find<Fl_Button>(box, button)); };
  }
};

TEST_F(HostFileTest, KeepsEncodingAndLineEnds) {
  using namespace std::string_literals;
  for (const auto& [bytes, saved] : std::vector<std::pair<std::string, std::string>>{
           {"a 1\n", "n\na 1\n"},
           {"a 1\r\nb 2", "n\r\na 1\r\nb 2"},
           {"a 1\r\nb 2\n\r\r\n", "n\na 1\r\nb 2\n\r\r\n"},
           {"\xEF\xBB\xBF\xE4\xB8\xBB\r\n", "\xEF\xBB\xBFn\r\n\xE4\xB8\xBB\r\n"},
           {"\xD6\xF7\xFF\0 1\xEF\x9F\xBF\n"s, "n\n\xD6\xF7\xFF\0 1\xEF\x9F\xBF\n"s}}) {
    EditHosts(bytes, {[](Fl_Window& editor) {
                TypeLine(editor);
                Save(editor);
                Leave(editor);
              }});
    EXPECT_EQ(Hosts(), saved);
  }
}

TEST_F(HostFileTest, NothingTypedOrWrittenByOthersIsLostUnasked) {
  const auto otherProgram = [&] { std::ofstream(Files().hostFile) << "other 2\n"; };
  const std::string away = Files().workFolder + ".away";
  std::string why;
  EditHosts("a 1\n", {TypeLine, Leave, Answering("Keep Editing"),
                      [&](Fl_Window& editor) {
                        otherProgram();
                        Save(editor);
                      },
                      Answering("Cancel"),
                      [&](Fl_Window& editor) {
                        EXPECT_EQ(Hosts(), "other 2\n");
                        std::filesystem::rename(Files().workFolder, away);
                        Save(editor);
                      },
                      [&](Fl_Window& box) {
                        why = Drawing(box).Text(box);
                        Key(box, FL_Enter);
                        std::filesystem::rename(away, Files().workFolder);
                      },
                      Save, Answering("Save Over"),
                      [&](Fl_Window& editor) {
                        EXPECT_EQ(Hosts(), "n\na 1\n");
                        Leave(editor);
                      },
                      [](Fl_Window& dialog) {
                        EXPECT_TRUE(HostTexts(dialog).starts_with("Host CPUs Group uses n"));
                      }});
  EXPECT_NE(why.find("No such file or directory"), std::string::npos) << why;

  // Without changes the editor follows the file; dropping them brings it back.
  std::string text;
  EditHosts("a 1\n", {[&](Fl_Window& editor) {
                        otherProgram();
                        EXPECT_TRUE(Until([&] {
                          return Drawing(editor).Text(editor).find("other 2") != std::string::npos;
                        }));
                        TypeLine(editor);
                        Press(Find<Fl_Button>(editor, "Reload"));
                      },
                      Answering("Drop Changes"), Leave});
  EXPECT_EQ(Hosts(), "other 2\n");

  ASSERT_TRUE(TextViewer::Edit(Files().hostFile, texts_));
  TypeLine(*Fl::first_window());
  Talk([&] { PressKey('q', FL_CTRL); }, {Answering("Keep Editing")});
  EXPECT_TRUE(window_->shown());
  Talk([&] { PressKey('q', FL_CTRL); }, {Answering("Drop Changes")});
  EXPECT_FALSE(window_->shown());
}

TEST_F(HostFileTest, TypedTextIsKeptWhenNobodyCanBeAsked) {
  const std::string beside = Files().hostFile + ".unsaved";
  std::ofstream(Files().hostFile) << "a 1\n";
  ASSERT_TRUE(TextViewer::Edit(Files().hostFile, texts_));
  TypeLine(*Fl::first_window());
  window_->StoreTyped();
  EXPECT_EQ(Hosts(), "n\na 1\n");
  TextViewer::CloseAll();
  for (const std::string& kept : {beside, beside + "2"}) {
    ASSERT_TRUE(TextViewer::Edit(Files().hostFile, texts_));
    TypeLine(*Fl::first_window());
    std::ofstream(Files().hostFile) << "other" << kept.back() << "\n";
    window_->StoreTyped();
    EXPECT_EQ(Hosts(), std::string("other") + kept.back() + "\n");
    EXPECT_NE(Log().find("it is kept in [" + kept + "]"), std::string::npos) << Log();
    TextViewer::CloseAll();
  }
  EXPECT_EQ(TempFolder::Read(beside), "n\nn\na 1\n");
  ASSERT_TRUE(TextViewer::Edit(Files().hostFile, texts_));
  TypeLine(*Fl::first_window());
  window_->Leave();
  EXPECT_EQ(Hosts(), "n\nother2\n");
}

TEST_F(DialogsTest, AnOpenDialogShowsWhatIsHandedOver) {
  std::ofstream(Files().hostFile) << "node1 4\nnode2 8\n";
  Files().ReadHostFile();
  OpenMpp({[&](Fl_Window&) {
             std::ofstream(Files().handOverFile)
                 << "#mpi_param=-genv\n#mpp_param=k\n#group=300,2,0\n#mpp=1\n";
             application_->Tick();
             EXPECT_TRUE(Until([&] { return Stored().use_mpp; }));
           },
           [&](Fl_Window& dialog) {
             auto& param = Beside<Fl_Input>(dialog, "MPI Param");
             EXPECT_TRUE(Until([&] { return param.value() == std::string("-genv"); }));
             EXPECT_TRUE(Find<Fl_Check_Button>(dialog, "Use MPP").value());
             EXPECT_STREQ(Beside<Fl_Input>(dialog, "Memory2 (MB)").value(), "300");
             EXPECT_NE(HostTexts(dialog).find("node1 4 2 - node2 8 not used -"), std::string::npos)
                 << HostTexts(dialog);
             EXPECT_NE(HostTexts(dialog).find("own numbers of CPUs: 300,2,0"), std::string::npos);
             TypeInto(param, "-genv all");
           },
           [&](Fl_Window& dialog) {
             Beside<Fl_Input>(dialog, "MPP Param").take_focus();
             Key(dialog, 'x', 0, "x");
             window_->StoreTyped();
             EXPECT_NE(Stored().mpp_param.find('x'), std::string::npos) << "of a log-out";
             Key(dialog, FL_Escape);
           }});
  EXPECT_EQ(Stored().mpi_param, "-genv all");
  EXPECT_EQ(Group()->Text(), "300,2,0");
}

TEST_F(DialogsTest, StopRunningNeedsTheSwitchFile) {
  const std::string deck = AddJob("stopped", "run 60");
  const std::string folder = deck.substr(0, deck.rfind('/'));
  const auto stop = [](Fl_Window& dialog) { Press(Find<Fl_Button>(dialog, "Stop Running")); };
  OpenMpp({stop, Close});
  EXPECT_NE(Log().find(">> Not find running job, stop running job failed"), std::string::npos);
  window_->Perform(Action::kSubmit);
  ASSERT_TRUE(Until([&] { return std::filesystem::exists(folder + "/messag"); }));
  OpenMpp({stop,
           [&](Fl_Window& box) {
             EXPECT_NE(Log().find("BG_SWITCH file [" + folder + "/bg_switch] does not exist"),
                       std::string::npos);
             EXPECT_FALSE(std::filesystem::exists(folder + "/d3kil"));
             std::ofstream(folder + "/bg_switch") << "1\n";
             Confirm(box);
           },
           stop, Close});
  // The solver has read the request, written its restart file and ended.
  EXPECT_TRUE(Until([&] { return !Group()->Running(); }));
  EXPECT_TRUE(std::filesystem::exists(folder + "/d3dump01"));
}

TEST_F(DialogsTest, ConfigurationIsStored) {
  Talk([&] { PressTool("tip_config"); }, {[](Fl_Window& dialog) {
                                            EXPECT_STREQ(dialog.label(), "Configuration");
                                            Choose(Find<Fl_Choice>(dialog), "Chinese");
                                          },
                                          Confirm,  // with the next start
                                          [](Fl_Window& dialog) {
                                            TypeInto(Beside<Fl_Input>(dialog, "Text Editor"),
                                                     "my editor -w");
                                            Press(Find<Fl_Check_Button>(dialog, "Output d3dump"));
                                            Press(Find<Fl_Check_Button>(dialog, "Delete adaptdmp"));
                                            Close(dialog);
                                          }});
  EXPECT_EQ(Stored().language, 1);
  EXPECT_EQ(Stored().viewer, "my editor -w");
  EXPECT_FALSE(Stored().output_dump);
  EXPECT_TRUE(Stored().no_adapdump);
  Talk([&] { PressTool("tip_config"); }, {[](Fl_Window& dialog) {
         EXPECT_STREQ(Find<Fl_Choice>(dialog).text(), "Chinese");
         EXPECT_TRUE(Find<Fl_Check_Button>(dialog, "Delete adaptdmp").value());
         Close(dialog);
       }});
  EXPECT_EQ(HeadsOf(Table()).substr(0, 8), "Job Name");
}

// A file of settings that have changed is written whole.
TEST_F(DialogsTest, WhatStaysAsItIsChangesNoSetting) {
  Files().WriteSettings();
  OpenMpp({[](Fl_Window& dialog) {
    TypeInto(Beside<Fl_Input>(dialog, "Memory2 (MB)"), "200");
    Key(dialog, FL_Escape);
  }});
  Talk([&] { PressTool("tip_config"); },
       {[](Fl_Window& dialog) { Choose(Find<Fl_Choice>(dialog), "English"); }, Confirm, Close});
  for (const int key : {FL_Escape, FL_Enter})
    Talk([&] { PressTool("tip_about"); }, {[&](Fl_Window& dialog) {
           EXPECT_NE(Drawing(dialog).Text(dialog).find("2016 R1"), std::string::npos);
           Key(dialog, key);
         }});
  EXPECT_FALSE(Files().Dirty());
}

TEST_F(DialogsTest, RestartJobsRunWithTheirFiles) {
  const std::string deck = MakeDeck("again", "echo");
  const std::string dump = home_.Write("again/part.d3dump01", "dump");
  const auto open = [&](const std::vector<Step>& steps) {
    Talk([&] { PressTool("tip_addrestart"); }, steps);
  };
  const auto press = [](const char* button) {
    return [=](Fl_Window& dialog) { Press(Find<Fl_Button>(dialog, button)); };
  };
  const auto type = [](const char* label, const std::string& path) {
    return [=](Fl_Window& dialog) { TypeInto(Beside<Fl_Input>(dialog, label), path); };
  };
  open({type("Restart File (R=)", dump), press("Cancel")});
  EXPECT_EQ(Group()->JobCount(), 0);
  open({press("OK"), Confirm,  // no file yet
        type("Restart File (R=)", dump), press("Input File (I=)"), press("OK"), Confirm,
        type("Input File (I=)", deck), press("OK")});
  application_->Intake().Drain();
  Run();
  EXPECT_TRUE(Rows().at(0).starts_with("again.k (R=part.d3dump01)|")) << Rows()[0];
  MoveToCell(Part<JobTable>(), 0, "In Folder");
  const std::string tip = Tip();
  EXPECT_TRUE(tip.starts_with(deck + " Restarts from ")) << tip;
  EXPECT_TRUE(tip.ends_with("d3dump01")) << tip;
  const std::string arguments = TempFolder::Read(home_ / "again/standin_echo.txt");
  EXPECT_NE(arguments.find("r=" + dump + "\n"), std::string::npos) << arguments;
  EXPECT_NE(arguments.find("i=" + deck + "\n"), std::string::npos) << arguments;
  EXPECT_NE(arguments.find("jobid=part\n"), std::string::npos) << "beside what is gone on with";
}

class StagesTest : public DialogsTest {
 protected:
  // A job that begins with the second of three stages; the middle one fails or does not.
  void AddStages(const std::string& middle = {}) {
    std::string includes;
    for (const std::string name : {"one", "two", "three"}) {
      MakeDeck(name, name == "two" ? middle : "");
      includes += "*INCLUDE\n" + name + "/" + name + ".k\n";
    }
    Deck("three/three.k", "$ SIMULATION: TRIMMING\n");
    Queue(home_.Write("main.k", "$ RUNFIRST: 2\n*KEYWORD\n" + includes + "*END\n"));
    PressKey(FL_Home);
  }
  void OpenStages(const std::vector<Step>& steps) {
    Talk([&] { PressKey('e', FL_CTRL); }, steps);
  }
  static StageTable& Stages(Fl_Window& dialog) { return Find<StageTable>(dialog); }
  static Step On(const char* button) {
    return [=](Fl_Window& dialog) { Press(Find<Fl_Button>(dialog, button)); };
  }
};

TEST_F(StagesTest, AreShownMovedAndRemoved) {
  AddStages();
  OpenStages(
      {[](Fl_Window& dialog) {
         EXPECT_EQ(HeadsOf(Stages(dialog)), "File|Type|Solver|Memory|Status|Message|Summary");
         EXPECT_EQ(RowsOf(Stages(dialog)),
                   (Lines{"(1   one.k)|(–)|(LS-DYNA (S))|(500)|Queued|(View...)|(View...)",
                          "2   two.k|–|LS-DYNA (S)|500|Queued|(View...)|(View...)",
                          "3   three.k|TRIMMING|LS-DYNA (S)|500|Queued|(View...)|(View...)"}));
         MoveToCell(Stages(dialog), 0, "Status");
         EXPECT_EQ(Tip(), "Skipped: the run begins with a later stage.");
         EXPECT_FALSE(Find<Fl_Button>(dialog, "Move Up").active());
         PressCell(Stages(dialog), 2, "File");
         EXPECT_FALSE(Find<Fl_Button>(dialog, "Move Down").active());
       },
       On("Move Up"),
       [](Fl_Window& dialog) {
         EXPECT_EQ(RowsOf(Stages(dialog))[1].substr(0, 13), "(2   three.k)")
             << "the one to begin with stays the same";
         PressCell(Stages(dialog), 0, "File");
       },
       On("Remove"), [](Fl_Window& dialog) { Choose(Find<Fl_Choice>(dialog), "1   three.k"); },
       [](Fl_Window& dialog) {
         EXPECT_EQ(RowsOf(Stages(dialog)),
                   (Lines{"1   three.k|TRIMMING|LS-DYNA (S)|500|Queued|(View...)|(View...)",
                          "2   two.k|–|LS-DYNA (S)|500|Queued|(View...)|(View...)"}));
         Choose(Find<Fl_Choice>(dialog), "2   two.k");
       },
       [](Fl_Window& dialog) { Close(dialog); }});
  Run();
  EXPECT_TRUE(std::filesystem::exists(home_ / "two/messag.krb"));
  EXPECT_FALSE(std::filesystem::exists(home_ / "one/messag"));
  EXPECT_FALSE(std::filesystem::exists(home_ / "three/messag"));
}

TEST_F(StagesTest, TellHowTheyEnded) {
  AddStages("fail");
  Run();
  OpenStages({[](Fl_Window& dialog) {
                EXPECT_EQ(
                    RowsOf(Stages(dialog)),
                    (Lines{"(1   one.k)|(–)|(LS-DYNA (S))|(500)|Queued|(View...)|(View...)",
                           "2   two.k|–|LS-DYNA (S)|500|solver error 40509|View...|View...",
                           "3   three.k|TRIMMING|LS-DYNA (S)|500|Queued|(View...)|(View...)"}));
                MoveToCell(Stages(dialog), 1, "Status");
                EXPECT_EQ(Tip().substr(0, 8), "Reason: ");
                EXPECT_FALSE(Find<Fl_Button>(dialog, "Add...").active()) << "it has run";
                PressCell(Stages(dialog), 0, "Message");
              },
              [&](Fl_Window& box) {
                EXPECT_NE(Drawing(box).Text(box).find(Say("msg_view_job")), std::string::npos);
                Confirm(box);
              },
              [](Fl_Window& dialog) { PressCell(Stages(dialog), 1, "Summary"); },
              [](Fl_Window& summary) {
                EXPECT_STREQ(summary.label(), "Show Job Information");
                EXPECT_TRUE(Until([&] { return Find<Fl_Browser>(summary).size() > 1; }));
                Confirm(summary);
              },
              Close});
}

}  // namespace

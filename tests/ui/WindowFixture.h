// The application with its main window in the test's own process.
#ifndef KR_TESTS_UI_WINDOWFIXTURE_H
#define KR_TESTS_UI_WINDOWFIXTURE_H

// Before the toolkit, whose headers bring macros of the window system.
#include <gtest/gtest.h>

#include <FL/Fl.H>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "core/Application.h"
#include "core/CoreFixture.h"
#include "ui/fltk/Theme.h"
#include "ui/Screen.h"
#include "ui/text/TextTable.h"
#include "ui/window/Flx_AppWnd.h"
#include "ui/window/QueueNotes.h"

class WindowTest : public CoreTest {
 protected:
  // All texts of the tables fit into this width.
  static constexpr int kWidth = 1500;
  static constexpr int kHeight = 600;

  explicit WindowTest(int language = 0) : language_(language) { OpenDisplay(); }
  ~WindowTest() override { Close(); }

  void SetUp() override { Start(); }

  // `arguments` may choose the solver mode; files come in with AddJob.
  void Start(std::vector<const char*> arguments = {}) {
    Close();
    arguments.insert(arguments.begin(), "kestrun");
    application_ = std::make_unique<Application>();
    ASSERT_TRUE(application_->Initialise(static_cast<int>(arguments.size()), arguments.data()));
    Files().SetSolverPath(SolverKind::kLsDynaSingle, KR_TEST_BIN_DIR "/standin_solver");
    Files().Set(&Settings::pause_time, 0);
    Files().Set(&Settings::viewer, std::string("none"));
    Files().Set(&Settings::last_path, home_.Path());
    application_->language = language_;
    Theme::Apply(language_);
    texts_ = {};
    FillTexts(language_, application_->Title(), texts_);
    window_ = std::make_unique<Flx_AppWnd>(*application_, notes_, texts_);
    window_->size(kWidth, kHeight);
    window_->show();
    ASSERT_TRUE(Until([&] { return window_->visible(); }));
  }

  // As at the end of the program: the exit code.
  int Close() {
    Fl::check();  // widgets that are to be deleted go before their window
    window_.reset();
    const int code = application_ ? application_->Shutdown() : 0;
    application_.reset();
    Fl::check();  // what the notes have still to tell
    return code;
  }

  SettingsAndPaths& Files() { return application_->SettingsAndFiles(); }
  const Settings& Stored() { return Files().Get(); }
  const std::shared_ptr<JobGroup> Group() { return application_->Manager().CurrentGroup(); }
  // The text of a key.
  std::string Say(const std::string& key) const { return window_->Texts().Get(key); }

  template <typename Kind>
  Kind& Part() {
    return Find<Kind>(*window_);
  }
  JobTable& Table() { return Part<JobTable>(); }
  std::vector<std::string> Rows() { return RowsOf(Table()); }
  // What the line at the bottom says.
  std::string Line() { return Drawing(*window_).Text(Part<StatusBar>()); }
  bool LineSays(const std::string& text) {
    return Until([&] { return Line().find(text) != std::string::npos; });
  }

  // The button whose tip begins with the text of the key.
  ToolButton& Tool(const std::string& tipKey) {
    for (ToolButton* tool : All<ToolButton>(*window_)) {
      if (std::string(tool->tooltip()).starts_with(Say(tipKey))) return *tool;
    }
    throw std::runtime_error("no such tool: " + tipKey);
  }
  void PressTool(const std::string& tipKey) { Press(Tool(tipKey)); }
  void PressKey(int key, int state = 0) { Key(*window_, key, state); }

  // A deck in a folder of its own, in the queue. The command is for the stand-in.
  std::string AddJob(const std::string& name, const std::string& command = {}) {
    const std::string path = MakeDeck(name, command);
    Queue(path);
    return path;
  }
  std::string MakeDeck(const std::string& name, const std::string& command = {}) {
    std::filesystem::create_directories(home_ / name);
    return Deck(name + "/" + name + ".k", command.empty() ? "" : "$ standin: " + command + "\n");
  }
  void Queue(const std::string& path) {
    JobRequest request = MakeJobRequest(Stored());
    request.jobFile = path;
    application_->Intake().Add(request);
    application_->Intake().Drain();
    window_->Perform(Action::kRefresh);
  }

  // A job as it stands, without a deck's being read.
  template <typename Kind>
  std::shared_ptr<Kind> MakeJob(const std::string& path, JobStatus status = JobStatus::kQueued) {
    auto job = std::make_shared<Kind>(Stored());
    job->jobFile = path;
    job->status = status;
    return job;
  }
  void Add(std::shared_ptr<JobFile> job) {
    Group()->AddJob(std::move(job));
    window_->Perform(Action::kRefresh);
  }

  // Submits and waits for the end of the run.
  void Run() {
    window_->Perform(Action::kSubmit);
    EXPECT_TRUE(Until([&] { return !Group()->Running(); }));
    window_->Perform(Action::kRefresh);
  }

  const int language_;
  QueueNotes notes_;  // outlives the groups that tell it things
  TextTable texts_;
  std::unique_ptr<Application> application_;
  std::unique_ptr<Flx_AppWnd> window_;
};

#endif

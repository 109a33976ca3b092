// Decks on disk and scanned jobs.
#ifndef KR_TESTS_JOBS_JOBFIXTURES_H
#define KR_TESTS_JOBS_JOBFIXTURES_H

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "jobs/DeckScan.h"
#include "support/TempFolder.h"

class DeckTest : public testing::Test {
 protected:
  std::string Write(const std::string& name, const std::string& text) const {
    return temporary_.Write(name, text);
  }

  std::unique_ptr<JobFileDyna> Job(const std::string& path) const {
    auto job = std::make_unique<JobFileDyna>(settings_);
    job->jobFile = path;
    return job;
  }

  bool Scan(JobFileDyna& job) {
    return ScanDeck(job,
                    {[this](const Message& message) { log_.push_back(message.English()); }, {}});
  }

  // A job with the deck's text scanned.
  std::unique_ptr<JobFileDyna> Scanned(const std::string& text) {
    auto job = Job(Write("deck.k", text));
    EXPECT_TRUE(Scan(*job));
    return job;
  }

  Settings settings_;
  TempFolder temporary_;
  const std::filesystem::path folder_ = temporary_.Path();
  std::vector<std::string> log_;
};

#endif

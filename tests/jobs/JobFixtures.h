// Decks on disk and scanned jobs.
#ifndef KR_TESTS_JOBS_JOBFIXTURES_H
#define KR_TESTS_JOBS_JOBFIXTURES_H

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "jobs/DeckScan.h"

class DeckTest : public testing::Test {
 protected:
  DeckTest() {
    const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
    folder_ = std::filesystem::temp_directory_path() / ("kr-jobs-" + std::to_string(stamp));
    std::filesystem::create_directories(folder_);
  }
  ~DeckTest() override {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  std::string Write(const std::string& name, const std::string& text) const {
    const std::string path = (folder_ / name).string();
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }

  std::unique_ptr<JobFileDyna> Job(const std::string& path) const {
    auto job = std::make_unique<JobFileDyna>(settings_);
    job->jobFile = path;
    return job;
  }

  bool Scan(JobFileDyna& job) {
    return ScanDeck(job, {[this](const std::string& line) { log_.push_back(line); }, progress_});
  }

  // A job with the deck's text scanned.
  std::unique_ptr<JobFileDyna> Scanned(const std::string& text) {
    auto job = Job(Write("deck.k", text));
    EXPECT_TRUE(Scan(*job));
    return job;
  }

  Settings settings_;
  std::filesystem::path folder_;
  std::vector<std::string> log_;
  std::function<bool(std::uint64_t, std::uint64_t)> progress_;
};

#endif

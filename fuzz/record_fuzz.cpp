// The two readers of the record: the journal's lines, and what they say of the queue.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "record/Form.h"
#include "record/History.h"
#include "record/Journal.h"
#include "record/QueueImage.h"

namespace {

const JournalName kName{"queue", "here"};

void ReadLines(std::string_view bytes) {
  const JournalText text = ReadJournalText(bytes, kName);
  if (text.end > bytes.size()) std::abort();
  std::string again = JournalLine("kestrun queue 1 here 0");
  for (const std::string_view record : text.records) again += JournalLine(record);
  if (ReadJournalText(again, kName).records.size() != text.records.size()) std::abort();
}

// What was read once is read the same from its own snapshot.
void ReadQueue(std::string_view bytes) {
  QueueImage image;
  while (!bytes.empty()) {
    const std::size_t line = bytes.find('\n');
    ApplyRecord(bytes.substr(0, line), image);
    bytes.remove_prefix(line == std::string_view::npos ? bytes.size() : line + 1);
  }
  std::size_t jobs = 0;
  for (const GroupImage& group : image.now.groups) {
    for (const JobId job : group.jobs) {
      if (image.now.Find(job) == nullptr) std::abort();
      ++jobs;
    }
  }
  if (jobs != image.now.jobs.size()) std::abort();
  QueueImage again;
  const std::vector<std::string> records = SnapshotOf(image);
  for (const std::string& record : records) {
    if (!ApplyRecord(record, again)) std::abort();
  }
  if (SnapshotOf(again) != records) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  ReadLines(bytes);
  ReadQueue(bytes);
  RunRecord run;
  form::Take(form::Parsed(bytes), run);
  return 0;
}

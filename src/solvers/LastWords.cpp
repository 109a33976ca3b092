#include "solvers/LastWords.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <vector>

#include "jobs/OutputPrefix.h"
#include "solvers/RunSteps.h"
#include "util/files/FileDirWrapper.h"
#include "util/process/ConsoleLines.h"

namespace {

constexpr std::size_t kMostLines = 20;
constexpr std::size_t kLongestLine = 200;

struct Meaning {
  std::uint32_t number;
  PlainMessageId words;
};

constexpr Meaning kSignals[] = {
    {1, MessageId::kSignalConsoleClosed}, {2, MessageId::kSignalInterrupted},
    {3, MessageId::kSignalQuit},          {4, MessageId::kSignalInstruction},
    {6, MessageId::kSignalGaveUp},        {7, MessageId::kSignalBus},
    {8, MessageId::kSignalArithmetic},    {9, MessageId::kSignalMemory},
    {11, MessageId::kSignalForeign},      {13, MessageId::kSignalPipe},
    {15, MessageId::kSignalAsked},        {24, MessageId::kSignalCpuTime},
    {25, MessageId::kSignalFileSize},
};

// Of a shell, and of what starts programs for others.
constexpr Meaning kCodes[] = {
    {126, MessageId::kExitNotRunnable},
    {127, MessageId::kExitNotFound},
};

constexpr Meaning kStatuses[] = {
    {0xC0000005, MessageId::kSignalForeign},      {0xC000001D, MessageId::kSignalInstruction},
    {0xC0000017, MessageId::kSignalMemory},       {0xC000007B, MessageId::kStatusWrongImage},
    {0xC0000094, MessageId::kSignalArithmetic},   {0xC00000FD, MessageId::kStatusStack},
    {0xC0000135, MessageId::kStatusDllMissing},   {0xC0000138, MessageId::kStatusDllOther},
    {0xC0000139, MessageId::kStatusDllOther},     {0xC000013A, MessageId::kStatusInterrupted},
    {0xC0000142, MessageId::kStatusDllNotLoaded}, {0xC0000374, MessageId::kStatusHeap},
    {0xC0000409, MessageId::kSignalGaveUp},
};

template <std::size_t size>
const Meaning* Find(const Meaning (&meanings)[size], std::uint32_t number) {
  const auto found = std::find_if(std::begin(meanings), std::end(meanings),
                                  [&](const Meaning& one) { return one.number == number; });
  return found == std::end(meanings) ? nullptr : found;
}

// Whatever the files of the run are called, one that is not there says nothing.
bool HasMessageFile(const JobFile& job) {
  return job.RunErrorCode() != RunError::kNoMessageFile &&
         FileDirWrapper::FileExists(job.MessageFile());
}

std::string PrintedLast(const JobFile& job) {
  const std::string file = ConsoleFileOf(job);
  std::string text;
  if (HasMessageFile(job) || job.folderBefore.HoldsUnchanged(file)) return text;
  for (const std::string& line : LastConsoleLines(file, kMostLines, kLongestLine)) {
    text += (text.empty() ? "" : "\n") + line;
  }
  return text;
}

}  // namespace

std::string ConsoleFileOf(const JobFile& job) {
  const std::string prefix = OutputPrefix(job);
  return prefix.empty() ? job.MainFile() + ".console.txt"
                        : FileDirWrapper::Join(job.Folder(), prefix + "console.txt");
}

Message ExitWords(int exitCode) {
  const int signal = PTWrapperProcess::SignalOf(exitCode);
  const auto number = static_cast<std::uint32_t>(exitCode);
  if (signal != 0) {
    const Meaning* const meaning = Find(kSignals, static_cast<std::uint32_t>(signal));
    return meaning != nullptr ? Message(MessageId::kExitSignalOf, signal, Message(meaning->words))
                              : Message(MessageId::kExitSignal, signal);
  }
  if (number < 0x80000000) {
    const Meaning* const meaning = Find(kCodes, number);
    return meaning != nullptr ? Message(MessageId::kExitCodeOf, exitCode, Message(meaning->words))
                              : Message(MessageId::kExitCode, exitCode);
  }
  char digits[16];
  std::snprintf(digits, sizeof digits, "0x%08X", static_cast<unsigned>(number));
  const Meaning* const meaning = Find(kStatuses, number);
  return meaning != nullptr ? Message(MessageId::kOfFile, digits, Message(meaning->words))
                            : Message(MessageId::kForeignWords, digits);
}

bool TellsOfMissingProgram(int exitCode) {
  const auto number = static_cast<std::uint32_t>(exitCode);
  return Find(kCodes, number) != nullptr || number == 0xC000007B || number == 0xC0000135 ||
         number == 0xC0000138 || number == 0xC0000139 || number == 0xC0000142;
}

Message LastWordsOf(const JobFile& job, std::optional<int> exitCode) {
  const int code = job.RunErrorCode();
  if (code != RunError::kNotNormal && code != RunError::kNoMessageFile) return {};
  const bool tells = exitCode && *exitCode != 0;
  const std::string printed = PrintedLast(job);
  Message words;
  if (tells && printed.empty()) {
    words = Message(MessageId::kSolverEnded, ExitWords(*exitCode));
  } else if (tells) {
    words = Message(MessageId::kSolverEndedPrinting, ExitWords(*exitCode), printed);
  } else if (!printed.empty()) {
    words = Message(MessageId::kSolverPrinted, printed);
  }
  return WithoutToken(job, words);
}

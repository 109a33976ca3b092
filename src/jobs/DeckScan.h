// Reads an LS-DYNA keyword deck for what the queue needs to know.
#ifndef KR_JOBS_DECKSCAN_H
#define KR_JOBS_DECKSCAN_H

#include <cstdint>
#include <functional>
#include <string>

#include "jobs/JobFile.h"

struct DeckScanHooks {
  MessageSink report;  // for the application log; may be empty
  // Bytes read and the file's size, now and then. Returning false ends the scan. May be empty.
  std::function<bool(std::uint64_t done, std::uint64_t size)> progress;
};

// Scans job.jobFile and fills the job's deck fields, its solver type (when the deck recommends one)
// and first stage; sets caseRun when the deck has cases. Stages are jobs whose decks are scanned on
// their own.
// False, with the job unchanged, when the deck cannot be read ("File [%s] does not exist", "Read
// file [%s] failed") or the scan was ended. Reads in small pieces: a deck of any size needs little
// memory. Any thread that owns the job.
//
// The deck's memory goes to deckMemory only: see ApplyDeckMemory.
bool ScanDeck(JobFileDyna& job, const DeckScanHooks& hooks);

// Sets the memory of a scanned job: the deck's own value when the settings ask for it (memory_auto)
// and the deck has one, else memory_size.
void ApplyDeckMemory(JobFileDyna& job, const Settings& settings);

#endif

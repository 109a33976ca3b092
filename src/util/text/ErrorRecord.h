// The error model that every utility family shares.
#ifndef KR_UTIL_TEXT_ERRORRECORD_H
#define KR_UTIL_TEXT_ERRORRECORD_H

#include <cstdarg>
#include <memory>
#include <string>

// Called with the text of an error and the user data given with the printer, on the thread that
// met the error.
using ErrorPrinter = void (*)(const char* message, void* userData);

// Keeps the last error of one object. An object and its record belong to one thread at a time.
class ErrorReporting {
 public:
  ErrorReporting();
  virtual ~ErrorReporting();
  ErrorReporting(const ErrorReporting&) = delete;
  ErrorReporting& operator=(const ErrorReporting&) = delete;

  // The text of the most recent failure; a success does not clear it. Empty before the first one.
  std::string LastError() const;

  // A null printer switches notification off.
  void SetErrorPrinterHandle(ErrorPrinter printer, void* userData);

 protected:
  // Formats and keeps the message, whatever its length, and hands it to the printer when it is not
  // empty. Leaves the process in the "C" locale: messages always use a decimal point.
  // A null format does nothing.
#if defined(__clang__)
  __attribute__((format(printf, 2, 3)))
#elif defined(__GNUC__)
  // "printf" would mean the old Windows runtime's formats there, which are not used.
  __attribute__((format(gnu_printf, 2, 3)))
#endif
  void
  SetLastError(const char* format, ...);

 private:
  struct Record;
  std::unique_ptr<Record> record_;
};

#endif

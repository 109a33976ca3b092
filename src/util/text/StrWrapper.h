// Text helpers. Static operations may run on any thread.
#ifndef KR_UTIL_TEXT_STRWRAPPER_H
#define KR_UTIL_TEXT_STRWRAPPER_H

#include <string>
#include <vector>

#include "util/text/ErrorRecord.h"

class StrWrapper : public ErrorReporting {};

class StrWrapperTxt : public StrWrapper {
 public:
  // Drops blanks and tabs (nothing else) at both ends. False, with an empty `out`, when nothing is
  // left.
  static bool Trim(const std::string& in, std::string& out);

  // The pieces between separators, empty ones left out, not trimmed.
  static void SeparateString(const std::string& line, std::vector<std::string>& pieces,
                             char separator);

  // Splits a command line into arguments by the Windows quoting rules, on both systems: blanks and
  // tabs separate, double quotes group, 2n backslashes before a quote give n, 2n+1 give n and a
  // literal quote; two quotes inside a quoted part give a literal quote and end that part. The
  // first word follows the simpler rule for program names: no escapes. An empty line has none.
  static void SplitCommandLine(const std::string& commandLine, std::vector<std::string>& args);

  // Plain decimal conversion of the leading digits after blanks and an optional sign; no digits
  // give 0. Values outside 32 bits are clamped; unsigned ones to 64 bits, and below zero to 0.
  static int LeadingInt(const std::string& text);
  static unsigned long long LeadingUnsigned(const std::string& text);
};

#endif

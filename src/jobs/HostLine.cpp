#include "jobs/HostLine.h"

#include <algorithm>

#include "util/text/StrWrapper.h"

namespace {

constexpr std::size_t kNameWidth = 20;
constexpr char kBlanks[] = " \t";

// The next word from `at` on; moves `at` behind it.
std::string TakeWord(const std::string& line, std::size_t& at) {
  const std::size_t begin = std::min(line.find_first_not_of(kBlanks, at), line.size());
  at = std::min(line.find_first_of(kBlanks, begin), line.size());
  return line.substr(begin, at - begin);
}

}  // namespace

bool ParseHostLine(const std::string& line, HostLine& host) {
  std::size_t at = 0;
  host.name = TakeWord(line, at);
  if (host.name.empty()) return false;
  host.cpus = StrWrapperTxt::LeadingInt(TakeWord(line, at));
  host.rest = line.substr(std::min(line.find_first_not_of(kBlanks, at), line.size()));
  return true;
}

std::string FormatHostLine(const HostLine& host) {
  std::string line = host.name;
  line.resize(std::max(kNameWidth, line.size() + 1), ' ');
  line += std::to_string(host.cpus);
  return host.rest.empty() ? line : line + ' ' + host.rest;
}

bool ValidHostName(const std::string& name) {
  return !name.empty() && name.front() != '#' && std::none_of(name.begin(), name.end(), [](char c) {
    return c == ' ' || static_cast<unsigned char>(c) < ' ';
  });
}

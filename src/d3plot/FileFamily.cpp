#include "d3plot/FileFamily.h"

#include "d3plot/ResultFile.h"

namespace {

constexpr int kLastNumber = 499;

char Digit(int value) {
  return static_cast<char>('0' + value);
}

// Puts the number behind the first `stem` bytes of the name: two digits, or three from 100 on.
// Written by hand: formatting costs a good part of what a failing open costs.
void SetNumber(std::string& name, std::size_t stem, int number) {
  name.resize(stem);
  if (number >= 100) name += Digit(number / 100);
  name += Digit(number / 10 % 10);
  name += Digit(number % 10);
}

bool AddMember(const std::string& name, FileFamily& family) {
  ResultFile file;
  if (!file.Open(name.c_str())) return false;
  family.members.push_back({name, file.Size()});
  return true;
}

void AddFamily(const std::string& first, std::vector<FileFamily>& families) {
  FileFamily family;
  if (!AddMember(first, family)) return;
  std::string name = first;
  for (int number = 1; number <= kLastNumber; ++number) {
    SetNumber(name, first.size(), number);
    AddMember(name, family);
  }
  families.push_back(std::move(family));
}

}  // namespace

std::vector<FileFamily> FindFamilies(const std::string& base) {
  std::vector<FileFamily> families;
  AddFamily(base, families);
  if (families.empty()) return families;
  std::string name = base + "aa";
  for (char x = 'a'; x <= 'z'; ++x) {
    for (char y = 'a'; y <= 'z'; ++y) {
      name[base.size()] = x;
      name[base.size() + 1] = y;
      AddFamily(name, families);
    }
  }
  return families;
}

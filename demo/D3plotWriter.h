// Writes a result database of the published d3plot layout: the base file with the model, and
// numbered files with states in which no node has moved. Element results are zero or left out.
#ifndef STANDIN_D3PLOTWRITER_H
#define STANDIN_D3PLOTWRITER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Deck.h"

class D3plotWriter {
 public:
  // Writes the base file with 4-byte words, or 8-byte ones in double precision, and removes the
  // numbered files of an earlier run. Copies nothing: the deck must outlive the writer.
  bool Begin(const std::string& path, const Deck& deck, bool doublePrecision);
  bool Begun() const { return deck_ != nullptr; }

  // Adds a state behind the last one and the end mark behind it; a new numbered file begins where a
  // file would grow too long.
  bool WriteState(double time);

 private:
  void Int(std::int64_t value);
  void Real(double value);
  void Text(const std::string& text, std::size_t words);
  void Zeros(std::size_t count);
  void EndFile(std::size_t bytesBefore);
  bool Save(const std::string& path, std::size_t offset);

  void Control();
  void Geometry();
  void Numbering();
  std::int64_t NodeIndex(std::int64_t id) const;
  std::int64_t PartIndex(std::int64_t id) const;
  std::size_t StateWords() const;
  std::size_t ElementValues() const;
  std::string MemberName(int number) const;

  std::string path_;
  const Deck* deck_ = nullptr;
  std::size_t wordBytes_ = 4;
  std::vector<char> buffer_;
  std::vector<char> coordinates_;  // of all nodes, as every state repeats them
  int member_ = 1;
  std::size_t memberBytes_ = 0;  // written to the current numbered file, without its end mark
};

#endif

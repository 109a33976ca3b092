// Writes the pages and the contents of a compiled-help file to its output: krhelp FILE
//
// The library that reads such files trusts them. So it runs here, in a process of its own with
// little memory and time: a damaged file ends this process and nothing else. Each entry is a line
// of its size in bytes, a blank and its name, then its bytes as UTF-8; the last line is "end".

#include <chm_lib.h>
#include <fcntl.h>
#include <iconv.h>
#include <strings.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <string>

#include "ui/help/HelpBook.h"
#include "util/text/PlainText.h"

namespace {

constexpr rlim_t kMostMemory = 512U << 20;  // bytes
constexpr rlim_t kMostSeconds = 2;          // of processor time
constexpr unsigned kChinese = 4;            // the language of a locale id, in its low ten bits

struct Output {
  unsigned language = 0;
  int entries = 0;
  std::size_t bytes = 0;
};

void Limit(int resource, rlim_t most) {
  const rlimit limit{most, most};
  setrlimit(resource, &limit);
}

bool NamesUtf8(const std::string& page) {
  const std::string head = page.substr(0, page.find("<body"));
  for (std::size_t at = head.find("charset="); at != std::string::npos;) {
    const std::size_t value = at + 8 + (head[at + 8] == '"' ? 1 : 0);
    return strncasecmp(head.c_str() + value, "utf-8", 5) == 0;
  }
  return false;
}

// Bytes that mean nothing in the code page become question marks.
std::string ToUtf8(const std::string& text, const char* codePage) {
  const iconv_t converter = iconv_open("UTF-8", codePage);
  if (converter == iconv_t(-1)) return text;
  std::string from = text;
  char* at = from.data();
  std::size_t left = from.size();
  std::string out;
  std::array<char, 4096> piece;
  while (left > 0) {
    char* to = piece.data();
    std::size_t room = piece.size();
    const std::size_t before = left;
    iconv(converter, &at, &left, &to, &room);
    out.append(piece.data(), piece.size() - room);
    if (left == before && room == piece.size()) {
      out += '?';
      ++at;
      --left;
    }
  }
  iconv_close(converter);
  return out;
}

int Write(chmFile* file, chmUnitInfo* unit, void* context) {
  auto* output = static_cast<Output*>(context);
  if (++output->entries > HelpBook::kMostEntries) return CHM_ENUMERATOR_FAILURE;
  const std::string name = unit->path;
  const bool page = EndsInAnyCase(name, ".htm") || EndsInAnyCase(name, ".html");
  if ((!page && !EndsInAnyCase(name, ".hhc")) || name.find('\n') != std::string::npos)
    return CHM_ENUMERATOR_CONTINUE;
  if (unit->length > HelpBook::kMostPageBytes) return CHM_ENUMERATOR_FAILURE;
  std::string bytes(static_cast<std::size_t>(unit->length), '\0');
  if (!bytes.empty() &&
      chm_retrieve_object(file, unit, reinterpret_cast<unsigned char*>(bytes.data()), 0,
                          static_cast<LONGINT64>(bytes.size())) !=
          static_cast<LONGINT64>(bytes.size()))
    return CHM_ENUMERATOR_FAILURE;
  if (!NamesUtf8(bytes)) bytes = ToUtf8(bytes, output->language == kChinese ? "CP936" : "CP1252");
  output->bytes += bytes.size();
  if (output->bytes > HelpBook::kMostBytes) return CHM_ENUMERATOR_FAILURE;
  std::printf("%zu %s\n", bytes.size(), name.c_str());
  std::fwrite(bytes.data(), 1, bytes.size(), stdout);
  return CHM_ENUMERATOR_CONTINUE;
}

// The language of the locale id in the file's header. False when it is no regular file that begins
// as a compiled-help file does.
bool ReadHeader(const char* path, unsigned& language) {
  const int file = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return false;
  struct stat info;
  std::array<unsigned char, 24> head;
  const bool good = fstat(file, &info) == 0 && S_ISREG(info.st_mode) &&
                    read(file, head.data(), head.size()) == static_cast<ssize_t>(head.size()) &&
                    std::string(head.begin(), head.begin() + 4) == "ITSF";
  close(file);
  language = (head[20] | static_cast<unsigned>(head[21]) << 8) & 0x3FF;
  return good;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "krhelp is started by Kestrun to read its help file.\n");
    return 2;
  }
  Limit(RLIMIT_CORE, 0);
  Limit(RLIMIT_AS, kMostMemory);
  Limit(RLIMIT_CPU, kMostSeconds);
  Output output;
  if (!ReadHeader(argv[1], output.language)) return 1;
  chmFile* file = chm_open(argv[1]);
  if (!file || !chm_enumerate(file, CHM_ENUMERATE_NORMAL | CHM_ENUMERATE_FILES, Write, &output))
    return 1;
  std::printf("end\n");
  return std::fflush(stdout) == 0 ? 0 : 1;
}

#include "jobs/DeckLines.h"

#include <algorithm>
#include <bit>
#include <cstring>

#if defined(__SSE2__) || defined(_M_X64)
#define KR_SSE2
#include <emmintrin.h>
#endif

namespace {

// Big enough that system calls do not count, small enough to stay in the processor's cache.
constexpr std::size_t kBlock = 256 * 1024;
constexpr std::uint64_t kProgressStep = std::uint64_t{8} << 20;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool BeginsCard(char c) {
  return c == '*' || c == '$';
}

const char* LineEnd(const char* from, const char* end) {
  return static_cast<const char*>(std::memchr(from, '\n', static_cast<std::size_t>(end - from)));
}

#ifdef KR_SSE2
// 0xFF for each of the 16 bytes at `at` that begins a card.
__m128i CardBytes(const char* at) {
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
  const __m128i stars = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('*'));
  return _mm_or_si128(stars, _mm_cmpeq_epi8(bytes, _mm_set1_epi8('$')));
}

std::uint64_t Bits(__m128i bytes) {
  return static_cast<unsigned>(_mm_movemask_epi8(bytes));
}
#endif

// The first '*' or '$' in (from, end) that stands behind a line feed, `end` when there is none.
// The byte at `from` itself is only looked at as the one before.
const char* FindCard(const char* from, const char* end) {
  const char* at = from + 1;
#ifdef KR_SSE2
  for (; end - at >= 64; at += 64) {
    const __m128i a = CardBytes(at);
    const __m128i b = CardBytes(at + 16);
    const __m128i c = CardBytes(at + 32);
    const __m128i d = CardBytes(at + 48);
    if (Bits(_mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d))) == 0) continue;
    std::uint64_t bits = Bits(a) | Bits(b) << 16 | Bits(c) << 32 | Bits(d) << 48;
    for (; bits != 0; bits &= bits - 1) {
      const char* const found = at + std::countr_zero(bits);
      if (found[-1] == '\n') return found;
    }
  }
#endif
  for (; at < end; ++at) {
    if (BeginsCard(*at) && at[-1] == '\n') return at;
  }
  return end;
}

}  // namespace

bool DeckLines::Open(const std::string& path) {
  if (!file_.Open(path)) return false;
  buffer_ = std::make_unique_for_overwrite<char[]>(kBlock);
  return true;
}

bool DeckLines::Fill() {
  if (progress_ && done_ >= nextProgress_ && !stopped_) {
    stopped_ = !progress_(done_, file_.Size());
    nextProgress_ = done_ + kProgressStep;
  }
  next_ = end_ = buffer_.get();
  if (stopped_) return false;
  const std::ptrdiff_t count = file_.Read(buffer_.get(), kBlock);
  if (count < 0) failed_ = true;
  const std::size_t size = count > 0 ? static_cast<std::size_t>(count) : 0;
  end_ = next_ + size;
  if (done_ == 0 && std::string_view(next_, size).starts_with(kByteOrderMark)) {
    next_ += kByteOrderMark.size();
  }
  done_ += size;
  return next_ != end_;
}

bool DeckLines::NextCard(std::string_view& line) {
  if (again_ && !last_.empty() && BeginsCard(last_[0])) return NextLine(line);
  again_ = false;
  while (next_ != end_ || Fill()) {
    const bool here = atLineStart_ && BeginsCard(*next_);
    const char* const found = here ? next_ : FindCard(next_, end_);
    if (found != end_) {
      next_ = found;
      TakeLine();
      line = last_;
      return true;
    }
    atLineStart_ = end_[-1] == '\n';
    next_ = end_;
  }
  return false;
}

bool DeckLines::NextLine(std::string_view& line) {
  if (!again_) {
    if (next_ == end_ && !Fill()) return false;
    TakeLine();
  }
  again_ = false;
  line = last_;
  return true;
}

void DeckLines::TakeLine() {
  const char* lineEnd = LineEnd(next_, end_);
  if (lineEnd != nullptr) {
    last_ = {next_, static_cast<std::size_t>(lineEnd - next_)};
  } else {
    joined_.clear();
    do {
      lineEnd = LineEnd(next_, end_);
      const char* const pieceEnd = lineEnd != nullptr ? lineEnd : end_;
      const std::size_t room = kLongestLine - joined_.size();
      joined_.append(next_, std::min(room, static_cast<std::size_t>(pieceEnd - next_)));
      if (lineEnd == nullptr) next_ = end_;
    } while (lineEnd == nullptr && Fill());
    last_ = joined_;
  }
  if (lineEnd != nullptr) next_ = lineEnd + 1;
  atLineStart_ = true;
  last_ = last_.substr(0, kLongestLine);
  if (!last_.empty() && last_.back() == '\r') last_.remove_suffix(1);
}

// Replacing text in a TBstr. The search ends at the first zero unit; what follows it is kept.

#include <stdint.h>

#include "cpu/dispatch.h"
#include "string/bstr_block.h"
#include "string/find_units.h"
#include "string/replace_levels.h"
#include "string/splice.h"
#include "string/units.h"

namespace KEST {

namespace {

constexpr SVersions<CollectMatchesRoutine> kCollectMatches = {
    CollectMatchesPlain, CollectMatchesSse2, nullptr, CollectMatchesAvx2};
constexpr TDispatch<kCollectMatches> CollectMatches;

constexpr SVersions<CopyReplacingRoutine> kCopyReplacing = {CopyReplacingPlain, CopyReplacingSse2,
                                                            nullptr, CopyReplacingAvx2};
constexpr TDispatch<kCopyReplacing> CopyReplacing;

// The matches of one text in another, a batch at a time.
class TMatches {
 public:
  TMatches(const unsigned short* text, const unsigned short* needle, int length)
      : search{text, ucslen(text), needle, static_cast<size_t>(length)} {
    Restart();
  }

  // Takes the first batch, and the one behind the last.
  void Restart() {
    behind = 0;
    Next();
  }
  void Next() {
    count = CollectMatches(search, behind, places, kMatchesInBatch);
    if (count != 0) behind = places[count - 1] + search.needleLength;
  }

  bool IsLastBatch() const { return count < kMatchesInBatch; }
  size_t Count() const { return count; }
  const unsigned int* Places() const { return places; }

 private:
  const SMatchSearch search;
  size_t behind = 0;
  size_t count = 0;
  unsigned int places[kMatchesInBatch];
};

int64_t CountAll(TMatches& matches) {
  size_t count = matches.Count();
  while (!matches.IsLastBatch()) {
    matches.Next();
    count += matches.Count();
  }
  if (count >= kMatchesInBatch) matches.Restart();
  return static_cast<int64_t>(count);
}

void CopyAllReplacing(SReplacing& state, const unsigned short* text, TMatches& matches) {
  for (;; matches.Next()) {
    CopyReplacing(state, text, matches.Places(), matches.Count());
    if (matches.IsLastBatch()) break;
  }
  MoveUnits(state.dest, state.rest, state.restLength);
}

// to may lie in text, as what is searched for may: both then end where the search does, so that
// only the last match can touch them.
int ReplaceInPlace(unsigned short* text, TMatches& matches, const unsigned short* to,
                   size_t length) {
  size_t count = 0;
  for (;; matches.Next()) {
    for (size_t i = 0; i < matches.Count(); ++i) MoveUnits(text + matches.Places()[i], to, length);
    count += matches.Count();
    if (matches.IsLastBatch()) return static_cast<int>(count);
  }
}

}  // namespace

size_t CollectMatchesPlain(const SMatchSearch& search, size_t start, unsigned int* places,
                           size_t room) {
  const unsigned short* rest = search.text + start;
  for (size_t found = 0; found < room; ++found) {
    const unsigned short* match = FindUnits(rest, search.needle, search.needleLength);
    if (match == nullptr) return found;
    places[found] = static_cast<unsigned int>(match - search.text);
    rest = match + search.needleLength;
  }
  return room;
}

void CopyReplacingPlain(SReplacing& state, const unsigned short* text, const unsigned int* places,
                        size_t count) {
  for (; count != 0; ++places, --count) {
    const size_t before = static_cast<size_t>(text + *places - state.rest);
    MoveUnits(state.dest, state.rest, before);
    MoveUnits(state.dest + before, state.units, state.length);
    Advance(state, before);
  }
}

int TBstr::Replace(const unsigned short* from, const unsigned short* to) {
  Discard(multibyte);
  const int oldLength = Length(string);
  const int fromLength = TextLength(from);
  const int toLength = TextLength(to);
  if (fromLength < 1 || fromLength > oldLength) return 0;
  TMatches matches(string, from, fromLength);
  if (toLength == fromLength) {
    return ReplaceInPlace(string, matches, to, static_cast<size_t>(toLength));
  }
  const int64_t count = CountAll(matches);
  if (count == 0) return 0;
  const int64_t length = oldLength + count * (toLength - fromLength);
  unsigned short* fresh = length <= INT_MAX ? NewBstr(static_cast<unsigned int>(length)) : nullptr;
  if (fresh != nullptr) {
    SReplacing state = {fresh,
                        static_cast<size_t>(length),
                        string,
                        static_cast<size_t>(oldLength),
                        to,
                        static_cast<size_t>(toLength),
                        static_cast<size_t>(fromLength)};
    CopyAllReplacing(state, string, matches);
  }
  FreeBstr(string);
  string = fresh;
  return fresh != nullptr || length == 0 ? static_cast<int>(count) : 0;
}

}  // namespace KEST

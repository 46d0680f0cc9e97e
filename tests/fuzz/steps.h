// Targets that take an object and a plain model of it through the same steps: how an input is read
// for them, the allocator that they run under, which an input can tell to refuse requests, and the
// loop over an input's steps.

#ifndef KEST_TESTS_FUZZ_STEPS_H
#define KEST_TESTS_FUZZ_STEPS_H

#include <limits.h>
#include <stdlib.h>

#include <algorithm>
#include <string>
#include <vector>

#include "fuzz/fuzz.h"
#include "kest/frame.h"

namespace kest_fuzz {

using Bytes = std::vector<unsigned char>;

// Arguments as a hostile caller has them, for which few bytes of input are needed.
class StepInput : public Input {
 public:
  using Input::Input;

  // A size, an index or a count: from 2 below 0 to 2 above limit, which is up to 200, or at the
  // edges of int.
  int Number(int limit) {
    static constexpr int kEdges[] = {INT_MIN, INT_MIN + 1, -INT_MAX / 2, 0x3FFFFFFF,
                                     1 << 30, 0x7FFFFFFB,  0x7FFFFFFD,   INT_MAX};
    constexpr int kFirstEdge = 256 - static_cast<int>(sizeof(kEdges) / sizeof(kEdges[0]));
    const int byte = Byte();
    return byte >= kFirstEdge ? kEdges[byte - kFirstEdge] : byte % (limit + 5) - 2;
  }

  // A unit of few kinds, so that texts have much in common: letters of both cases, blanks, digits,
  // a sign, bytes, wide units, half a pair, and zero.
  char16_t Letter() {
    static constexpr char16_t kLetters[] = {u'a',   u'b',   u'A', u'B',   u' ',   u'0',
                                            u'9',   u'-',   u'@', 0x00E9, 0x0100, 0x20AC,
                                            0xD83D, 0xFFFF, u' ', 0};
    return kLetters[Below(16)];
  }

  // Up to limit units, zero units among them.
  std::u16string Text(int limit) {
    std::u16string text(static_cast<size_t>(Below(limit + 1)), u'a');
    for (char16_t& unit : text) unit = Letter();
    return text;
  }

  // Up to limit bytes, of any value.
  Bytes SomeBytes(int limit) {
    Bytes bytes(static_cast<size_t>(Below(limit + 1)));
    for (unsigned char& byte : bytes) byte = Byte();
    return bytes;
  }
};

// The allocator hooks for its lifetime, one at a time. Large requests are always refused, so that
// hostile sizes cost nothing and mean the same on every machine; so are endless ones.
class Memory {
 public:
  static constexpr unsigned int kLargest = 1 << 16;
  static constexpr int kMostBlocks = 1 << 12;

  Memory() {
    s_live = s_refusals = s_earlierRefusals = 0;
    s_mode = kGrant;
    KEST::SAllocator hooks = {Alloc, Realloc, Free};
    KEST::MemInit(&hooks);
  }
  ~Memory() { KEST::MemTerm(); }
  Memory(const Memory&) = delete;
  Memory& operator=(const Memory&) = delete;

  // Grants so many more requests, then refuses one, or all to the end of the step.
  void RefuseAfter(int grants, bool toTheEnd) {
    s_grants = grants;
    s_mode = toTheEnd ? kRefuseToTheEnd : kRefuseOne;
  }

  void BeginStep() {
    if (s_mode == kRefuseToTheEnd && s_grants == 0 && Refused()) s_mode = kGrant;
    s_earlierRefusals = s_refusals;
  }

  // Requests refused so far, and whether one of this step was.
  int Refusals() const { return s_refusals; }
  bool Refused() const { return s_refusals != s_earlierRefusals; }

  // Blocks taken minus blocks given back.
  int Live() const { return s_live; }

 private:
  enum Mode { kGrant, kRefuseOne, kRefuseToTheEnd };

  static bool Grant(unsigned int size) {
    const bool due = s_mode != kGrant && s_grants == 0;
    if (s_mode != kGrant && !due) --s_grants;
    if (due && s_mode == kRefuseOne) s_mode = kGrant;
    if (!due && size <= kLargest && s_live < kMostBlocks) return true;
    ++s_refusals;
    return false;
  }
  static void* Alloc(unsigned int size) {
    if (!Grant(size)) return nullptr;
    ++s_live;
    return malloc(size);
  }
  static void* Realloc(void* block, unsigned int size) {
    if (!Grant(size)) return nullptr;
    if (block == nullptr) ++s_live;
    return realloc(block, size);
  }
  static void Free(void* block) {
    if (block != nullptr) --s_live;
    free(block);
  }

  static inline int s_live, s_grants, s_refusals, s_earlierRefusals;
  static inline Mode s_mode;
};

// Runs an input. TSubject(in, memory) takes what it needs of it; then each byte is either a request
// to refuse memory, or the number of a step, which TSubject::Step(number, in) takes and checks. In
// the end no block may be left.
template <typename TSubject>
int RunSteps(const uint8_t* data, size_t size, int mostSteps) {
  constexpr int kFirstRefusal = 0xE0;
  Memory memory;
  {
    StepInput in(data, size);
    TSubject subject(in, memory);
    for (int n = 0; n < mostSteps && in.Left() != 0; ++n) {
      const int step = in.Byte();
      if (step >= kFirstRefusal) {
        memory.RefuseAfter(step % 16, step % 32 >= 16);
        continue;
      }
      memory.BeginStep();
      subject.Step(step, in);
    }
  }
  FUZZ_CHECK(memory.Live() == 0);
  return 0;
}

}  // namespace kest_fuzz

#endif  // KEST_TESTS_FUZZ_STEPS_H

// The blocks that BSTRs are: the prefix (the text's length in bytes), the units, and a zero unit; a
// BSTR is the address of its first unit. Inline, because a call of an exported function goes
// through the linkage table.

#ifndef KEST_SRC_STRING_BSTR_BLOCK_H
#define KEST_SRC_STRING_BSTR_BLOCK_H

#include <string.h>

#include "frame/default_hooks.h"
#include "kest/frame.h"

namespace KEST {

constexpr unsigned int kBstrPrefixSize = sizeof(unsigned int);
constexpr unsigned int kUnitSize = sizeof(unsigned short);

// The longest text whose block size fits 32 bits.
constexpr unsigned int kMaxBstrLength = 0x7FFFFFFC;

constexpr unsigned int BstrBlockSize(unsigned int length) {
  return kBstrPrefixSize + (length + 1) * kUnitSize;
}

inline char* BlockOf(unsigned short* bstr) {
  return reinterpret_cast<char*>(bstr) - kBstrPrefixSize;
}

// 0 for null.
inline unsigned int BstrLength(const unsigned short* bstr) {
  if (bstr == nullptr) return 0;
  unsigned int size;
  memcpy(&size, reinterpret_cast<const char*>(bstr) - kBstrPrefixSize, kBstrPrefixSize);
  return size / kUnitSize;
}

// Sets prefix and terminator in a block with room for length units.
inline unsigned short* MakeBstr(void* block, unsigned int length) {
  const unsigned int size = length * kUnitSize;
  memcpy(block, &size, kBstrPrefixSize);
  auto* bstr = reinterpret_cast<unsigned short*>(static_cast<char*>(block) + kBstrPrefixSize);
  bstr[length] = 0;
  return bstr;
}

constexpr unsigned int kSizeClasses = 8;
constexpr unsigned int kSizeClassBytes = 32;
constexpr unsigned int kKeptLimit = kSizeClasses * kSizeClassBytes;

// Short blocks that were released, kept for the next texts of about their lengths that the thread
// makes: the last one of each size class. Only a thread between its KestInitialize and its
// KestUninitialize, which gives them back, keeps any.
struct SKeptBlocks {
  struct {
    void* block;
    unsigned int size;  // what may be used of it, 0 when there is none
  } classes[kSizeClasses];
  int starts;
};

// In the static thread block: the general model costs more than what is saved.
extern __thread SKeptBlocks t_kept __attribute__((tls_model("initial-exec")));

// The calling thread keeps blocks from the first start until as many stops.
void StartKeepingBlocks();
void StopKeepingBlocks();

inline void* TakeBlock(unsigned int size) {
  if (size < kKeptLimit && UsesDefaultHooks()) {
    auto& kept = t_kept.classes[size / kSizeClassBytes];
    if (kept.size >= size) {
      kept.size = 0;
      return kept.block;
    }
  }
  return KestMemAlloc(size);
}

// size is what may be used of the block at least.
inline void GiveBlock(void* block, unsigned int size) {
  if (size < kKeptLimit && t_kept.starts != 0 && UsesDefaultHooks()) {
    auto& kept = t_kept.classes[size / kSizeClassBytes];
    void* const before = kept.size != 0 ? kept.block : nullptr;
    kept = {block, size};
    if (before == nullptr) return;
    block = before;
  }
  KestMemFree(block);
}

// The units are left for the caller to fill. Null for 0 and for what no block holds, and without
// memory.
inline unsigned short* NewBstr(unsigned int length) {
  if (length - 1 >= kMaxBstrLength) return nullptr;
  void* block = TakeBlock(BstrBlockSize(length));
  return block != nullptr ? MakeBstr(block, length) : nullptr;
}

inline unsigned short* NewBstr(const unsigned short* s, unsigned int length) {
  unsigned short* bstr = NewBstr(length);
  if (bstr != nullptr && s != nullptr) memcpy(bstr, s, length * kUnitSize);
  return bstr;
}

inline void FreeBstr(unsigned short* bstr) {
  if (bstr != nullptr) GiveBlock(BlockOf(bstr), BstrBlockSize(BstrLength(bstr)));
}

// What the files of TBstr do with its two fields.

inline int Length(const unsigned short* string) { return static_cast<int>(BstrLength(string)); }

inline void Clear(unsigned short*& string) {
  FreeBstr(string);
  string = nullptr;
}

inline void Discard(char*& multibyte) {
  if (multibyte == nullptr) return;
  KestMemFree(multibyte);
  multibyte = nullptr;
}

}  // namespace KEST

#endif  // KEST_SRC_STRING_BSTR_BLOCK_H

// What the tests of the ciphers share.

#ifndef KEST_TESTS_CRYPTO_CIPHER_CHECKS_H
#define KEST_TESTS_CRYPTO_CIPHER_CHECKS_H

#include <gtest/gtest.h>
#include <limits.h>
#include <pthread.h>
#include <string.h>

#include <new>
#include <string>
#include <vector>

#include "kest/crypto.h"
#include "support/hex.h"
#include "support/random.h"

namespace kest_test {

using Bytes = std::vector<unsigned char>;

constexpr KEST::TCipher::ECipherOp kEncrypt = KEST::TCipher::kOpEncrypt;
constexpr KEST::TCipher::ECipherOp kDecrypt = KEST::TCipher::kOpDecrypt;
constexpr KEST::TCipher::ECipherOp kOddOp = static_cast<KEST::TCipher::ECipherOp>(2);
constexpr KEST::TBlockCipher::ECipherMode kCbc = KEST::TBlockCipher::kModeCbc;
constexpr KEST::TBlockCipher::ECipherMode kEcb = KEST::TBlockCipher::kModeEcb;

inline Bytes FromHex(const std::string& text) {
  Bytes bytes;
  for (size_t at = 0; at + 1 < text.size(); at += 2) {
    bytes.push_back(static_cast<unsigned char>(std::stoi(text.substr(at, 2), nullptr, 16)));
  }
  return bytes;
}

// count bytes: 3, 10, 17, ...
inline Bytes Counting(int count) {
  Bytes bytes;
  for (int n = 0; n < count; ++n) bytes.push_back(static_cast<unsigned char>(3 + 7 * n));
  return bytes;
}

// The result of one call, which has room for a block of padding.
inline Bytes Process(KEST::TCipher& cipher, const Bytes& data, bool final) {
  Bytes result = data;
  result.resize(data.size() + 8, 0xee);
  const int length = cipher.ProcessData(result.data(), static_cast<int>(data.size()), final);
  EXPECT_GE(length, 0);
  EXPECT_LE(length, static_cast<int>(result.size()));
  result.resize(static_cast<size_t>(length));
  return result;
}

// A copy and an assigned one, made in the middle of a message, end it as the original does.
template <typename Cipher>
void CopiesGoOnByThemselves(Cipher cipher, Cipher assigned) {
  Process(cipher, Counting(304), false);
  Cipher copy(cipher);
  assigned = cipher;
  const Bytes expected = Process(cipher, Counting(11), true);
  EXPECT_EQ(expected, Process(copy, Counting(11), true));
  EXPECT_EQ(expected, Process(assigned, Counting(11), true));
  // The next message starts where that of the original starts.
  EXPECT_EQ(Process(cipher, Counting(20), true), Process(assigned, Counting(20), true));
}

// One block, outside any mode.
template <typename Cipher>
std::string Block(const Cipher& cipher, const std::string& block) {
  Bytes bytes = FromHex(block);
  cipher.ProcessBlock(bytes.data());
  return Hex(bytes);
}

// A virtual function's slot: in the Itanium C++ ABI a pointer to it holds one more than its place
// in the table, in bytes.
template <typename Function>
size_t SlotOf(Function function) {
  size_t place;
  static_assert(sizeof(function) == 2 * sizeof(place));
  memcpy(&place, &function, sizeof(place));
  EXPECT_EQ(1u, place % 2) << "not virtual";
  return place / sizeof(void*);
}

// The table of an object's virtual functions.
inline void** TableOf(const void* object) {
  void** table;
  memcpy(&table, object, sizeof(table));
  return table;
}

// The bytes of a destroyed object, from the given offset on.
template <typename Cipher, typename... Args>
Bytes AfterDestruction(size_t offset, Args... args) {
  alignas(Cipher) unsigned char place[sizeof(Cipher)];
  Cipher* cipher = ::new (place) Cipher(args...);
  cipher->~Cipher();
  return Bytes(place + offset, place + sizeof(place));
}

// Calls the function far enough down the stack for what it leaves there not to be written over by
// the end of the thread.
inline void* CallDeeper(void* function) {
  volatile unsigned char gap[16 * 1024] = {};
  reinterpret_cast<void (*)()>(function)();
  return gap[0] == 0 ? nullptr : function;
}

// What construct leaves behind on a stack that was all zeros: that of a thread of its own.
inline Bytes StackAfter(void (*construct)()) {
  alignas(4096) static unsigned char stack[256 * 1024];
  memset(stack, 0, sizeof(stack));
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  EXPECT_EQ(0, pthread_attr_setstack(&attributes, stack, sizeof(stack)));
  pthread_t thread;
  EXPECT_EQ(0,
            pthread_create(&thread, &attributes, CallDeeper, reinterpret_cast<void*>(construct)));
  EXPECT_EQ(0, pthread_join(thread, nullptr));
  pthread_attr_destroy(&attributes);
  return Bytes(stack, stack + sizeof(stack));
}

inline bool Holds(const Bytes& memory, const void* bytes, size_t count) {
  const std::string all(memory.begin(), memory.end());
  return all.find(std::string(static_cast<const char*>(bytes), count)) != std::string::npos;
}

}  // namespace kest_test

#endif  // KEST_TESTS_CRYPTO_CIPHER_CHECKS_H

// Asynchronous cancels anywhere in the library's code. The process lives on, and what the thread
// worked on is half done, no more.
//
// The rows take no memory, because a cancel inside an allocator leaves that locked, and their own
// frames have nothing to unwind. Each row runs once before, so that the dynamic linker is done with
// it.

#include <gtest/gtest.h>
#include <semaphore.h>

#include "kest/collections.h"
#include "kest/crypto.h"
#include "kest/digest.h"
#include "kest/frame.h"
#include "kest/message.h"
#include "kest/text.h"
#include "kest/thread.h"
#include "stress/repeats.h"
#include "support/wide_text.h"

namespace {

using KEST::TThread;
using kest_test::Units;

unsigned char s_bytes[1024];
unsigned short s_text[1024];
int s_number;
unsigned int s_word;
void* s_pointer;

// What the rows work on. Here, because an object in a row's own frame would have to be unwound.
KEST::TMd5Digest s_md5;
KEST::TShaDigest s_sha;
KEST::THmac s_hmac(s_md5, s_bytes, 16);
KEST::TDesCipher s_des(KEST::TCipher::kOpEncrypt, s_bytes, 8);
KEST::TRc2Cipher s_rc2(KEST::TCipher::kOpDecrypt, s_bytes, 16, 128);
KEST::TRc4Cipher s_rc4(KEST::TCipher::kOpEncrypt, s_bytes, 16);
KEST::TPtrFromPtrMap s_map;
SBerItem s_item;
KEST::TCondVar s_condition;

struct Work {
  const char* name;
  void (*step)();
};

const Work kWork[] = {
    {"MD5", [] { s_md5.Update(s_bytes, sizeof s_bytes); }},
    {"SHA-1",
     [] {
       s_sha.Update(s_bytes, sizeof s_bytes);
       s_sha.Finish(s_bytes, 20);
     }},
    {"HMAC",
     [] {
       s_hmac.Update(s_bytes, sizeof s_bytes);
       s_hmac.Finish(s_bytes, 16);
     }},
    {"DES", [] { s_des.ProcessData(s_bytes, 512, false); }},
    {"RC2", [] { s_rc2.ProcessData(s_bytes, 512, true); }},
    {"RC4", [] { s_rc4.ProcessData(s_bytes, sizeof s_bytes, false); }},
    {"random numbers", [] { KestGenerateRandom(s_bytes, 100); }},
    {"checksum", [] { s_word = KestComputeChecksum(s_bytes, sizeof s_bytes); }},
    {"BER",
     [] {
       KestBerDecode(reinterpret_cast<const unsigned char*>("\x30\x03\x02\x01\x05"), 5, &s_item);
       // Nothing to move: the C library's 32-bit memmove cannot be unwound everywhere.
       s_item.value = nullptr;
       KestBerEncode(s_bytes, sizeof s_bytes, &s_item);
     }},
    {"words of big integers",
     [] {
       unsigned int high;
       s_word = KEST::TBigInt::WordMul(high, 0xDEADBEEF, 0x12345678);
       s_word = KEST::TBigInt::WordDiv(s_word, high, 0x12345679);
     }},
    {"base64",
     [] {
       KestBinToBase64(s_bytes, 300, s_text, 1024);
       KestBase64ToBin(s_text, s_bytes, sizeof s_bytes);
     }},
    {"formatted output",
     [] {
       KEST::snuprintf(s_text, 100, Units(u"%-8d|%#x|%s|%c"), 12345, 0xBEEF, Units(u"text"), 'c');
     }},
    {"numbers in text", [] { s_number = KEST::ucstol(Units(u"  -123456789"), nullptr, 10); }},
    {"UTF-8",
     [] {
       KestStringToUtf8(Units(u"g\u00FCltig \u20AC"), 9, reinterpret_cast<char*>(s_bytes), 100);
       KestUtf8ToString("g\xC3\xBCltig \xE2\x82\xAC", 12, s_text, 100);
     }},
    {"search and comparison",
     [] {
       s_pointer = KEST::ucsstr(Units(u"a needle in a haystack"), Units(u"stack"));
       s_number = KEST::ucsicmp(Units(u"One Text And"), Units(u"oNE tEXT aND another"));
     }},
    {"address", [] { KestInetAtoN(Units(u"192.168.1.2:8080"), &s_word, nullptr); }},
    {"names", [] { KestIsoToZelLang(Units(u"zh-TW"), &s_number); }},
    {"map", [] { s_map.Lookup(s_bytes, s_pointer); }},
    {"thread-local data", [] { s_pointer = KestTlsGetData(5); }},
    {"clocks", [] { s_word = KestGetMilliseconds() + KestGetMicroseconds(); }},
    {"counter", [] { KestAtomicIncrement(&s_number); }},
    {"callback of a message", [] { KestGiveMessage(5, nullptr, nullptr); }},
    {"short sleep", [] { TThread::Sleep(0); }},
};

// Posted by each thread as it begins to work; a cancel right behind that does no harm.
sem_t s_begun;

int Repeat(void* work) {
  const Work* const row = static_cast<const Work*>(work);
  sem_post(&s_begun);
  for (;;) row->step();
}

int Sleep(void*) {
  sem_post(&s_begun);
  return TThread::Sleep(1000000000);
}

// Its condition stays locked by the thread that is gone, and starts anew for the next.
int Wait(void*) {
  s_condition.Init();
  s_condition.Lock();
  sem_post(&s_begun);
  return s_condition.Wait(-1) ? 1 : 0;
}

class Cancels : public testing::Test {
 protected:
  void SetUp() override {
    KEST_SKIP_UNDER_TSAN("cannot follow an asynchronous cancel");
    ASSERT_EQ(0, sem_init(&s_begun, 0, 0));
    ASSERT_EQ(1, KestInitialize(nullptr));
    ASSERT_TRUE(KestRegisterMessageCallback(5, [](unsigned int, void*, void*) { ++s_number; }));
    for (const Work& row : kWork) row.step();
  }
  void TearDown() override {
    KestUnregisterMessageCallback(5);
    KestUninitialize();
  }

  // Lets proc(argument) begin and run for a while, and cancels it.
  void Hit(int (*proc)(void*), const void* argument) {
    TThread thread;
    ASSERT_TRUE(thread.Create(proc, const_cast<void*>(argument), false));
    sem_wait(&s_begun);
    for (volatile unsigned int pause = random.Next() % 2000; pause != 0; pause = pause - 1) {
    }
    ASSERT_TRUE(thread.Cancel());
    int code = 5;
    ASSERT_TRUE(thread.WaitForExit(&code));
    ASSERT_EQ(-1, code);
  }

  kest_test::Random random;
};

TEST_F(Cancels, HitTheLibraryAtWork) {
  const int cancels = kest_test::Repeats(100000, 0);
  for (int i = 0; i < cancels && !HasFatalFailure(); ++i) {
    const Work& row = kWork[static_cast<unsigned int>(i) % std::size(kWork)];
    SCOPED_TRACE(row.name);
    Hit(Repeat, &row);
  }
  for (const Work& row : kWork) row.step();
}

TEST_F(Cancels, HitWaitingThreads) {
  const int cancels = kest_test::Repeats(20000, 0);
  for (int i = 0; i < cancels && !HasFatalFailure(); ++i) {
    SCOPED_TRACE(i);
    Hit(i % 2 == 0 ? Sleep : Wait, nullptr);
  }
}

// Before the thread has begun, in the midst of a short function, or after its end; every other one
// is then left to itself.
TEST_F(Cancels, RaceWithTheWholeLifeOfAThread) {
  const int cancels = kest_test::Repeats(20000, 0);
  for (int i = 0; i < cancels && !HasFatalFailure(); ++i) {
    SCOPED_TRACE(i);
    TThread thread;
    ASSERT_TRUE(thread.Create(
        [](void*) {
          KestComputeChecksum(s_bytes, sizeof s_bytes);
          return 7;
        },
        nullptr, false));
    for (volatile unsigned int pause = random.Next() % 20000; pause != 0; pause = pause - 1) {
    }
    thread.Cancel();
    if (i % 2 == 0) continue;
    int code = 5;
    ASSERT_TRUE(thread.WaitForExit(&code));
    ASSERT_TRUE(code == 7 || code == -1) << code;
  }
}

}  // namespace

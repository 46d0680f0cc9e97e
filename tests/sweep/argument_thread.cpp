// kest/thread.h at the edges of its arguments.

#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include "collections/element.h"
#include "sweep/argument_text.h"

namespace kest_test {

namespace {

using namespace KEST;

int GiveBack(void* arg) { return static_cast<int>(reinterpret_cast<intptr_t>(arg)); }

// What GiveBack makes of any number.
int Given(void* arg) { return GiveBack(arg); }

// A wait that would last for ever, unless it is woken.
struct Sleeper {
  TCondVar signal;
  bool woken = false;

  static int Wake(void* arg) {
    Sleeper* const self = static_cast<Sleeper*>(arg);
    self->signal.Lock();
    self->woken = true;
    self->signal.Signal();
    return self->signal.Unlock();
  }
};

// Days from 1970 to the first of a month, in the calendar of today at all times.
long long DaysTo(long long year, long long month) {
  year += month / 12 - (month % 12 < 0);
  month = (month % 12 + 12) % 12;
  // Years begin in March here, so that a leap day is the last one.
  const long long shifted = year - (month < 2);
  const long long era = (shifted >= 0 ? shifted : shifted - 399) / 400, inEra = shifted - era * 400;
  const long long inYear = (153 * ((month + 10) % 12) + 2) / 5;
  return era * 146097 + inEra * 365 + inEra / 4 - inEra / 100 + inYear - 719468;
}

// Whether time_t holds the time, and struct tm its year.
bool IsTime(long long seconds) {
  const time_t time = static_cast<time_t>(seconds);
  tm fields;
  return time == seconds && gmtime_r(&time, &fields) != nullptr;
}

// Broken down and back, a time is itself.
void ExpectBreaksDown(const TTime& time) {
  tm fields;
  memset(&fields, 0, sizeof(fields));
  time.GetGmtTm(&fields);
  EXPECT_EQ(time.time, timegm(&fields));
  time.GetLocalTm(&fields);
  EXPECT_EQ(time.time, mktime(&fields));
}

void AddThreadRows(Table& table) {
  table.Row("KEST::TThread::Create(int (*)(void*), void*, bool)",
            [](bool given, unsigned int arg, bool flag) {
              TThread thread;
              EXPECT_EQ(given, thread.Create(given ? GiveBack : nullptr, Element(arg), flag));
              int code = 5;
              EXPECT_EQ(given, thread.WaitForExit(&code));
              EXPECT_EQ(given ? Given(Element(arg)) : 5, code);
              EXPECT_FALSE(thread.Cancel());
            });
  table.Row("KEST::TThread::ThreadCreate(void*, bool)", [](bool flag) {
    // Given a thread object that has been started before, which is started once more.
    TThread thread;
    EXPECT_TRUE(thread.Create(GiveBack, Element(7), false));
    void* handle = TThread::ThreadCreate(&thread, flag);
    int code = 5;
    EXPECT_TRUE(TThread::ThreadWaitForExit(handle, &code));
    EXPECT_EQ(7, code);
    EXPECT_TRUE(TThread::ThreadClose(handle));
  });
  table.Row("KEST::TThread::WaitForExit(int*)", [](bool started, bool given) {
    TThread thread;
    if (started) {
      EXPECT_TRUE(thread.Create(GiveBack, Element(7), false));
    }
    int code = 5;
    EXPECT_EQ(started, thread.WaitForExit(given ? &code : nullptr));
    EXPECT_EQ(started && given ? 7 : 5, code);
    EXPECT_FALSE(thread.WaitForExit(nullptr));
  });
  table.Row("KEST::TThread::Sleep(unsigned int)", [](unsigned int ms) {
    // More would last.
    if (ms > 1) return LeaveOut();
    EXPECT_EQ(0, TThread::Sleep(ms));
  });
  table.Row("KEST::TThread::ThreadSleep(unsigned int)", [](unsigned int ms) {
    if (ms > 1) return LeaveOut();  // as above
    EXPECT_EQ(0, TThread::ThreadSleep(ms));
  });
  table.Row("KestCreateThread", [](bool given, unsigned int arg, bool flag) {
    TThread* thread = KestCreateThread(given ? GiveBack : nullptr, Element(arg), flag);
    EXPECT_EQ(given, thread != nullptr);
    KestDestroyThread(thread, true);
  });
  table.Row("KestDestroyThread", [](bool given, bool wait) {
    KestDestroyThread(given ? KestCreateThread(GiveBack, nullptr, false) : nullptr, wait);
  });
  table.Row("KEST::TCondVar::Wait(int)", [](int ms) {
    Sleeper sleeper;
    ASSERT_EQ(0, sleeper.signal.Init());
    ASSERT_EQ(0, sleeper.signal.Lock());
    TThread waker;
    ASSERT_TRUE(waker.Create(Sleeper::Wake, &sleeper, false));
    // The waker cannot begin before the wait has. Once in a million the first wait fails at once.
    const bool inTime = sleeper.signal.Wait(ms) || sleeper.woken || sleeper.signal.Wait(ms);
    EXPECT_TRUE(inTime || (ms >= 0 && ms <= 1));
    EXPECT_EQ(0, sleeper.signal.Unlock());
    int code = 5;
    EXPECT_TRUE(waker.WaitForExit(&code));
    EXPECT_EQ(0, code);
    EXPECT_TRUE(sleeper.woken);
    EXPECT_EQ(0, sleeper.signal.Term());
  });
  table.Row("KestAtomicIncrement", [](int value) {
    const unsigned int next = static_cast<unsigned int>(value) + 1;
    EXPECT_EQ(static_cast<int>(next), KestAtomicIncrement(&value));
    EXPECT_EQ(static_cast<int>(next), value);
  });
  table.Row("KestAtomicDecrement", [](int value) {
    const unsigned int next = static_cast<unsigned int>(value) - 1;
    EXPECT_EQ(static_cast<int>(next), KestAtomicDecrement(&value));
    EXPECT_EQ(static_cast<int>(next), value);
  });

  table.Row("KestTlsAddData", Around(kLargestBlock), [](int key, unsigned int size) {
    unsigned char* data = static_cast<unsigned char*>(KestTlsAddData(key, size));
    EXPECT_EQ(size <= kLargestBlock, data != nullptr);
    if (size > kLargestBlock) {
      ExpectRequested(size);
    }
    EXPECT_EQ(data, KestTlsGetData(key));
    if (data != nullptr && size != 0) {
      EXPECT_EQ(0, data[0] | data[size - 1]);
    }
    EXPECT_EQ(data != nullptr, KestTlsRemoveData(key));
  });
  table.Row("KestTlsGetAddData", Around(kLargestBlock), [](int key, unsigned int size, bool there) {
    void* before = there ? KestTlsAddData(key, 1) : nullptr;
    void* data = KestTlsGetAddData(key, size);
    EXPECT_EQ(there || size <= kLargestBlock, data != nullptr);
    if (there) {
      EXPECT_EQ(before, data);
    }
    EXPECT_EQ(data, KestTlsGetData(key));
    EXPECT_EQ(data != nullptr, KestTlsRemoveData(key));
  });
  table.Row("KestTlsGetData", [](int key) {
    EXPECT_EQ(nullptr, KestTlsGetData(key));
    void* data = KestTlsAddData(key, 1);
    EXPECT_EQ(data, KestTlsGetData(key));
    EXPECT_TRUE(KestTlsRemoveData(key));
  });
  table.Row("KestTlsRemoveData", [](int key) {
    EXPECT_FALSE(KestTlsRemoveData(key));
    EXPECT_NE(nullptr, KestTlsAddData(key, 1));
    EXPECT_TRUE(KestTlsRemoveData(key));
    EXPECT_FALSE(KestTlsRemoveData(key));
  });
  table.Row("KEST::InternalTlsSetValue(void*)", [](unsigned int value) {
    void* before = InternalTlsGetValue();
    EXPECT_TRUE(InternalTlsSetValue(Element(value)));
    EXPECT_EQ(Element(value), InternalTlsGetValue());
    EXPECT_TRUE(InternalTlsSetValue(before));
  });

  table.Pairs(
      "KEST::TTime::TTime(int, int, int, int, int, int, int)", Honest(2024, 6, 15, 12, 30, 45, 0),
      [](int year, int month, int day, int hour, int minute, int second, int isDst) {
        setenv("TZ", "UTC0", 1);
        const TTime time(year, month, day, hour, minute, second, isDst);
        // Year and month are numbers of struct tm, which count from 1900 and from 0.
        const long long days =
            DaysTo(std::max(year, INT_MIN + 1900), std::max(month - 1LL, 1LL * INT_MIN));
        const long long seconds = (((days + day - 1) * 24 + hour) * 60 + minute) * 60 + second;
        // Asking for daylight saving shifts the time, because this zone has none.
        if (isDst <= 0) {
          EXPECT_EQ(IsTime(seconds) ? seconds : -1, time.time);
        }
        ExpectBreaksDown(time);
      });
  table.Row("KEST::TTime::TTime(unsigned short const*)",
            [](bool given) { EXPECT_EQ(0, TTime(Abc(given)).time); });
  table.Row("KEST::TTime::GetGmtTm(tm*) const", [](long seconds, bool given) {
    TTime time(nullptr);
    time.time = seconds;
    const GuardedBlock<tm> fields(1);
    time.GetGmtTm(given ? fields.Get() : nullptr);
    // The year of the largest times does not fit its field; nothing is written then.
    if (given && seconds == INT_MAX) {
      EXPECT_EQ(138, fields.Get()->tm_year);
    }
  });
  table.Row("KEST::TTime::GetLocalTm(tm*) const", [](long seconds, bool given) {
    TTime time(nullptr);
    time.time = seconds;
    const GuardedBlock<tm> fields(1);
    time.GetLocalTm(given ? fields.Get() : nullptr);
    if (given && seconds == INT_MAX) {
      EXPECT_EQ(138, fields.Get()->tm_year);
    }
  });
}

const Table kThread(AddThreadRows);

TEST(ArgumentSweep, Thread) { kThread.Run(); }

}  // namespace

}  // namespace kest_test

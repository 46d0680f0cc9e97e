// What gdb is asked to show in printers.gdb, scene by scene: whole objects, then what was never
// initialised or has been written over.

#include <stdlib.h>
#include <string.h>

#include "kest/kest.h"

using namespace KEST;

namespace {

// gdb stops here, and looks at the caller.
__attribute__((noinline)) void Stop() { __asm__ volatile(""); }

// Names that the library has for its own.
struct SMessageQueue {
  int mine;
} s_queue;

void* Mark(uintptr_t number) { return reinterpret_cast<void*>(number); }

void Texts() {
  TBstr none;
  TBstr plain("Hello");
  TBstr accents(KEST_TEXT("\u00e4\u20ac \"quoted\"\t\\"));
  TBstr pair(KEST_TEXT("a\U0001F600b"));
  const unsigned short half[] = {u'a', 0xD83D, u'b', 0xDE00, 0x85};
  TBstr halves(half, 5);
  const unsigned short zeros[] = {u'a', 0, 0, u'1', 0};
  TBstr inner(zeros, 5);
  TBstr million(u'x', 1000000);
  const TBstr& reference = plain;

  unsigned short* bstr = KestAllocString(KEST_TEXT("a BSTR"));
  unsigned short* withZeros = KestAllocStringLen(zeros, 5);
  unsigned short* longBstr = million.Copy();
  // Text in front of text may pass for a byte count.
  static const struct {
    alignas(16) unsigned int count;
    unsigned short text[8];
  } literal = {14, {u'n', u'o', u' ', u'B', 0, 0, 0, 0}};
  const unsigned short* text = literal.text;
  const unsigned short* noText = nullptr;
  static unsigned short endless[3000];
  for (unsigned short& unit : endless) unit = u'y';
  endless[2999] = 0;
  const unsigned short* longText = endless;
  typedef unsigned short TNumber;
  TNumber numbers[] = {1, 2};
  const TNumber* number = numbers;

  Stop();
  KestFreeString(bstr);
  KestFreeString(withZeros);
  KestFreeString(longBstr);
  (void)reference, (void)text, (void)noText, (void)longText, (void)number;
}

void Times() {
  TTime epoch = TTime::GetCurrentTime();
  TTime day = epoch;
  TTime before = epoch;
  epoch.time = 0;
  day.time = 1700000000;
  before.time = -1;
  _GUID guid = {0x00112233, 0x4455, 0x6677, {0x88, 0x99, 0xaa, 0xbb, 0xcc, 0xdd, 0xee, 0xff}};
  Stop();
  (void)guid, (void)day.time, (void)before.time;
}

void Containers() {
  TPtrArray noArray, array;
  for (uintptr_t i = 1; i <= 3; ++i) array.Add(Mark(i));
  TPtrList noList, list;
  for (uintptr_t i = 1; i <= 3; ++i) list.AddTail(Mark(i));
  list.RemoveHead();
  TPtrFromPtrMap noMap, pointers;
  pointers.SetAt(Mark(1), Mark(10));
  pointers.SetAt(Mark(18), Mark(20));  // the same bucket
  TPtrFromBstrMap texts;
  texts.SetAt(KEST_TEXT("one"), Mark(1));
  texts.SetAt(KEST_TEXT("\U0001F600"), Mark(2));
  TPtrFromGuidMap guids;
  _GUID guid = {7, 8, 9, {1, 2, 3, 4, 5, 6, 7, 8}};
  guids.SetAt(guid, Mark(3));
  TPtrFromPtrMap lost;
  lost.SetAt(Mark(1), Mark(2));
  lost.InitHashTable(5);
  TFifoBuffer noBytes, bytes;
  bytes.Write(reinterpret_cast<const unsigned char*>("abc"), 3);
  TPtrArray large;
  large.SetSize(1000000);
  TPtrFromPtrMap wide;
  wide.InitHashTable(5000000);
  wide.SetAt(Mark(4999999), Mark(1));
  SPlex* chain = nullptr;
  for (int i = 0; i < 3; ++i) SPlex::Create(chain, 1, 4);

  Stop();
  chain->FreeDataChain();
}

// Storage in which no constructor has run.
template <typename T>
union TRaw {
  unsigned char bytes[sizeof(T)];
  void* pointers[sizeof(T) / sizeof(void*)];
  T object;

  explicit TRaw(int fill) { memset(bytes, fill, sizeof(bytes)); }
  ~TRaw() {}
};

void Broken() {
  TRaw<TBstr> bstr(0xAB);
  TRaw<TPtrArray> array(0xAB);
  TRaw<TPtrList> list(0xAB);
  TRaw<TPtrFromPtrMap> map(0xAB), zeroMap(0);
  TRaw<TPtrFromBstrMap> textMap(0x7F);
  TRaw<TFifoBuffer> bytes(0xAB);
  TRaw<SPlex> plex(0xAB);

  // A byte count that is odd, and one that nothing ends.
  struct {
    unsigned int count;
    unsigned short text[6];
  } block = {5, {u'a', u'b', u'c', u'd', u'e', u'f'}},
    noEnd = {8, {u'a', u'b', u'c', u'd', u'e', u'f'}};
  TRaw<TBstr> odd(0), unended(0);
  odd.pointers[0] = block.text;
  unended.pointers[0] = noEnd.text;

  // A list and a chain of entries that go round in circles, and a list that has lost its end.
  static void* ring[3];
  ring[0] = ring;
  static void* ends[3];
  TRaw<TPtrList> circle(0), cut(0);
  circle.pointers[0] = circle.pointers[1] = ring;
  memset(circle.pointers + 2, 0x11, sizeof(int));
  cut.pointers[0] = cut.pointers[1] = ends;
  memset(cut.pointers + 2, 0x11, sizeof(int));
  static void* buckets[1] = {ring};
  TRaw<TPtrFromPtrMap> loop(0);
  loop.pointers[0] = buckets;
  int* const counts = reinterpret_cast<int*>(loop.pointers + 1);
  counts[0] = 1;
  counts[1] = 1000000000;
  TRaw<SPlex> round(0);
  round.pointers[0] = ring;
  const unsigned short* nowhere = static_cast<const unsigned short*>(Mark(16));
  static TRaw<char[1024]> garbage(0xAB);

  Stop();
  (void)nowhere, (void)garbage, (void)unended, (void)circle, (void)cut, (void)round;
}

void OnMessage(unsigned int, void*, void*) {}
void WakeHost(void*) {}

void* Allocate(unsigned int size) { return malloc(size); }
void* Resize(void* block, unsigned int size) { return realloc(block, size); }

void Drain(void* queue) {
  unsigned int id;
  void* param1;
  void* param2;
  while (InternalGetMessage(queue, id, param1, param2, false)) {
  }
}

void NoQueue() { Stop(); }

void EmptyQueue() { Stop(); }

// With the default hooks, across the end of a block.
void MessagesInLane() {
  const TBstr note("messages in a lane");
  const unsigned int id = KestRequestMessageId();
  KestRegisterMessageCallback(id, OnMessage);
  KestSetMessageAvailableCallback(WakeHost, nullptr);
  for (uintptr_t i = 0; i < 128; ++i) KestPostMessage(id, Mark(i), Mark(2 * i));
  unsigned int taken;
  void* param1;
  void* param2;
  for (int i = 0; i < 124; ++i) KestGetMessage(&taken, &param1, &param2);
  KestPostMessage(99, nullptr, nullptr);
  KestPostQuitMessage(Mark(5));
  Stop();
  KestUnregisterMessageCallback(id);
}

// With a client's hooks; and a queue from before they were set.
void MessagesOnList(void* older) {
  InternalPostMessage(older, 3, Mark(3), nullptr);
  void* const newer = InternalCreateMessageQueue();  // the front of the process's one lies apart
  InternalPostMessage(newer, 4, Mark(4), nullptr);
  KestPostMessage(5, Mark(5), Mark(6));
  KestPostMessage(6, Mark(7), Mark(8));
  Stop();
  InternalDestroyMessageQueue(newer);
}

// Not a queue at all.
void BrokenQueue() {
  static TRaw<char[1024]> garbage(0xAB);
  void* const queue = &garbage;
  Stop();
  (void)queue;
}

}  // namespace

int main() {
  s_queue.mine = 1;
  NoQueue();
  KestInitialize(nullptr);
  Texts();
  Times();
  Containers();
  Broken();
  EmptyQueue();
  MessagesInLane();
  KestUninitialize();

  void* const older = InternalCreateMessageQueue();
  InternalPostMessage(older, 1, Mark(1), nullptr);
  InternalPostMessage(older, 2, Mark(2), nullptr);
  SAllocator hooks = {Allocate, Resize, free};
  KestInitialize(&hooks);
  MessagesOnList(older);
  BrokenQueue();
  Drain(older);
  KestUninitialize();
  InternalDestroyMessageQueue(older);
  return 0;
}

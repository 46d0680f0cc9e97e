// Starts, uses and stops the library on two threads, as a program of its users does; memory
// checkers and sanitizers are to have nothing to say about it. Every text lies in a block of
// exactly its size, so that a read beyond it shows. With an argument it does what they are to
// report, so that their silence means something.

#include <stdlib.h>
#include <string.h>

#include "kest/kest.h"

using namespace KEST;

namespace {

int s_raced = 0;
unsigned int s_textId;
unsigned int s_units = 0;

// Text of length units in a block without a byte to spare.
unsigned short* Text(int length) {
  const size_t units = static_cast<size_t>(length) + 1;
  auto* text = static_cast<unsigned short*>(malloc(units * sizeof(unsigned short)));
  if (text == nullptr) abort();
  for (int i = 0; i < length; ++i) text[i] = static_cast<unsigned short>(u'a' + i % 26);
  text[length] = 0;
  return text;
}

unsigned int UseWideStrings(const unsigned short* text, int length) {
  unsigned short* copy = Text(length);
  unsigned int sum = ucslen(text) + KestStringUtf8ByteLen(text);
  sum += ucschr(text, u'z') != nullptr;
  sum += ucsrchr(text, u'z') != nullptr;
  sum += ucspbrk(text, KEST_TEXT("xyz")) != nullptr;
  sum += ucsstr(text, KEST_TEXT("xyz")) != nullptr;
  sum += ucscmp(text, copy) == 0;
  sum += ucsncmp(text, copy, static_cast<unsigned int>(length)) == 0;
  sum += ucsicmp(ucsupr(copy), text) == 0;
  ucsrev(copy);
  ucscpy(copy, text);
  free(copy);
  return sum;
}

unsigned int UseStrings(const unsigned short* text, int length) {
  TBstr a(text);
  TBstr b(a);
  a += b;
  a.Replace(KEST_TEXT("ab"), KEST_TEXT("b"));
  a.Insert(1, u'-');
  a.MakeUpper();
  unsigned int sum = static_cast<unsigned int>(a.GetLength() + a.Find(KEST_TEXT("YZ")));
  sum += static_cast<unsigned int>(b.Compare(text) + b.CompareNoCase(text));
  sum += strlen(a.GetMultibyteString()) != 0;
  char* bytes = static_cast<char*>(malloc(static_cast<size_t>(length) + 1));
  if (bytes == nullptr) abort();
  sum += static_cast<unsigned int>(KestStringToUtf8(text, length, bytes, length));
  b.Format(KEST_TEXT("%s %d"), text, length);
  free(bytes);
  return sum;
}

unsigned int UseCollections(unsigned short* text) {
  TPtrArray array;
  TPtrList list;
  TPtrFromBstrMap map;
  for (int i = 0; i < 20; ++i) {
    array.Add(text + i);
    list.AddTail(text + i);
    map.SetAt(text + i, text);
  }
  void* value = nullptr;
  map.RemoveKey(text + 1);
  return map.Lookup(text, value) && list.RemoveHead() == array[0] ? 1 : 0;
}

unsigned int UseDigests(const unsigned short* text, int length) {
  unsigned char digest[20];
  TShaDigest sha;
  sha.Update(reinterpret_cast<const unsigned char*>(text), 2 * length);
  return static_cast<unsigned int>(sha.Finish(digest, 0) + digest[0]);
}

// The message's text was written on the thread that posted it.
void OnText(unsigned int, void* text, void*) {
  s_units += static_cast<unsigned int>(static_cast<TBstr*>(text)->GetLength());
  delete static_cast<TBstr*>(text);
}

int Produce(void* finished) {
  ++s_raced;  // only in the run that is to be reported does the other thread count too
  KestInitialize(nullptr);
  for (int i = 1; i <= 300; ++i) KestPostMessage(s_textId, new TBstr(u'x', i), nullptr);
  KestPostQuitMessage(finished);
  KestUninitialize();
  return 0;
}

bool UseMessages(bool races) {
  s_textId = KestRequestMessageId();
  KestRegisterMessageCallback(s_textId, OnText);
  int finished = 0;
  TThread* const worker = KestCreateThread(Produce, &finished, false);
  if (worker == nullptr) return false;
  if (races) ++s_raced;
  while (KestMessageLoop() != &finished) continue;
  KestDestroyThread(worker, true);
  KestUnregisterMessageCallback(s_textId);
  return s_units == 300 * 301 / 2;
}

bool UseIt(bool races) {
  unsigned int sum = 0;
  for (int length = 1; length < 140; ++length) {
    unsigned short* text = Text(length);
    sum += UseWideStrings(text, length) + UseStrings(text, length);
    sum += UseDigests(text, length);
    if (length > 20) sum += UseCollections(text);
    free(text);
  }
  return sum != 0 && UseMessages(races);
}

}  // namespace

int main(int argc, char** argv) {
  const char* const fault = argc > 1 ? argv[1] : "";
  if (!KestInitialize(nullptr)) return 2;
  const bool used = UseIt(strcmp(fault, "race") == 0);
  int status = used ? 0 : 2;
  if (strcmp(fault, "leak") == 0) {
    // Many, because a pointer to one may be left somewhere.
    for (int i = 1; i < 100; ++i) TBstr(u'x', 100 * i).Detach();
  } else if (strcmp(fault, "overrun") == 0) {
    unsigned short* const text = Text(3);
    const volatile unsigned short* const past = text;
    status = past[4] == 0 ? status : status | 4;
    free(text);
  }
  KestUninitialize();
  return status;
}

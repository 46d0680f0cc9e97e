// A C program, which declares the flat functions that it needs.

#include <stdio.h>
#include <string.h>

int KestInitialize(void* allocator);
void KestUninitialize(void);
const char* KestGetVersion(void);
unsigned short* KestAllocString(const unsigned short* s);
void KestFreeString(unsigned short* bstr);
unsigned int KestStringLen(const unsigned short* bstr);
int KestStringToUtf8(const unsigned short* src, int length, char* dest, int size);
unsigned int KestRequestMessageId(void);
_Bool KestRegisterMessageCallback(unsigned int id, void (*callback)(unsigned int, void*, void*));
_Bool KestPostMessage(unsigned int id, void* param1, void* param2);
_Bool KestPostQuitMessage(void* param1);
void* KestMessageLoop(void);
extern unsigned int (*kest_ucslen)(const unsigned short*);

static void OnText(unsigned int id, void* text, void* length) {
  (void)id;
  *(unsigned int*)length = KestStringLen((const unsigned short*)text);
}

int main(void) {
  static const unsigned short kWord[] = {'K', 0xE9, 's', 't', 0};
  char utf8[8] = "";
  unsigned int length = 0;
  int result = 0, good;
  if (KestInitialize(NULL) != 1) return 1;

  unsigned short* text = KestAllocString(kWord);
  const unsigned int id = KestRequestMessageId();
  good = KestRegisterMessageCallback(id, OnText) && KestPostMessage(id, text, &length) &&
         KestPostQuitMessage(&result) && KestMessageLoop() == &result && length == 4 &&
         kest_ucslen(text) == 4 && KestStringToUtf8(text, 4, utf8, 8) == 5 &&
         strcmp(utf8, "K\xC3\xA9st") == 0 && strlen(KestGetVersion()) >= 5;
  KestFreeString(text);
  KestUninitialize();
  printf("%d-bit, C: %s\n", (int)(8 * sizeof(void*)), good ? "ok" : "FAILED");
  return good ? 0 : 1;
}

// Text: a TBstr is taken apart, compared, changed, formatted and turned into UTF-8.

#include <stdio.h>

#include "kest/frame.h"
#include "kest/string.h"

using KEST::TBstr;

// "key = value" becomes its two halves.
static bool Split(const TBstr& line, TBstr& key, TBstr& value) {
  const int equals = line.Find(u'=');
  if (equals < 0) return false;
  key = line.Left(equals);
  key.TrimRight();
  value = line.Mid(equals + 1);
  value.TrimLeft();
  return !key.IsEmpty() && !value.IsEmpty();
}

// On a UTF-8 terminal. The converter may write up to 2 bytes past the size that it is given.
static bool Print(const TBstr& text) {
  char bytes[80 + 2];
  if (KestStringUtf8ByteLen(text.GetString()) > 80) return false;
  const int count = KestStringToUtf8(text.GetString(), text.GetLength(), bytes, 80);
  return printf("%.*s\n", count, bytes) >= 0;
}

static bool Run() {
  TBstr key, value;
  if (!Split(KEST_TEXT("Greeting = grüß Gott"), key, value)) return false;
  if (key.CompareNoCase(KEST_TEXT("GREETING")) != 0) return false;

  value.SetAt(0, KEST::touupper(value.GetAt(0)));
  if (value.Replace(KEST_TEXT("Gott"), KEST_TEXT("dich, Welt")) != 1) return false;

  // Changes that get no memory leave the text empty.
  TBstr line;
  line.Format(KEST_TEXT("%s: %s! (%d units)"), key.GetString(), value.GetString(),
              value.GetLength());
  if (line.IsEmpty() || !Print(line)) return false;

  // A flat function gives a BSTR, which an object takes over and later frees.
  TBstr owner;
  owner.Attach(KestAllocString(KEST_TEXT("from 1 to 42")));
  if (owner.IsEmpty()) return false;
  const int space = owner.ReverseFind(u' ');
  line.Format(KEST_TEXT("the number is %d"), owner.Mid(space + 1).ToLong());
  return Print(line);
}

int main() {
  if (!KestInitialize(nullptr)) return 1;
  const bool done = Run();
  KestUninitialize();
  return done ? 0 : 1;
}

// The four markup characters of HTML and their entities.

#include <algorithm>

#include "cpu/dispatch.h"
#include "kest/text.h"
#include "string/splice.h"
#include "text/copy_until.h"
#include "text/escape.h"
#include "text/escape_levels.h"
#include "text/scratch.h"

namespace KEST {

namespace {

constexpr SVersions<uint64_t(const unsigned short*, size_t)> kCountAdded = {
    CountAddedPlain, CountAddedSse2, nullptr, CountAddedAvx2};
constexpr TDispatch<kCountAdded> CountAdded;

constexpr SVersions<unsigned short*(unsigned short*, const unsigned short*, size_t)> kWriteEscaped =
    {WriteEscapedPlain, WriteEscapedSse2, nullptr, WriteEscapedAvx2};
constexpr TDispatch<kWriteEscaped> WriteEscaped;

// Most units are letters, behind all of the markup characters.
bool IsMarkup(unsigned short unit) {
  return unit <= '>' && unit != 0 && kEntityTable.Of(unit).character == unit;
}

// The character of an entity, 0 when there is none of that name.
unsigned short CharacterNamed(const unsigned short* name, ptrdiff_t length) {
  for (const unsigned short character : {u'&', u'<', u'>', u'"'}) {
    const SEntity& entity = kEntityTable.Of(character);
    if (entity.length == length && ucsncmp(entity.name, name, entity.length) == 0) return character;
  }
  return 0;
}

// Returns the end of what it wrote. An entity of no character is dropped, and so is one that
// another '&' or the end of the text cuts short.
unsigned short* Unescape(const unsigned short* text, const unsigned short* end,
                         unsigned short* dest) {
  while ((text = CopyUntil('&', text, end, dest)) != end) {
    const unsigned short* const open = text++;
    while (text != end && *text != ';' && *text != '&') ++text;
    if (text == end || *text == '&') continue;
    ++text;
    if (const unsigned short ch = CharacterNamed(open, text - open)) *dest++ = ch;
  }
  return dest;
}

}  // namespace

uint64_t CountAddedPlain(const unsigned short* text, size_t count) {
  uint64_t added = 0;
  for (; count != 0; ++text, --count) {
    if (IsMarkup(*text)) added += kEntityTable.Of(*text).length - 1;
  }
  return added;
}

unsigned short* WriteEscapedPlain(unsigned short* dest, const unsigned short* text, size_t count) {
  for (; count != 0; ++text, --count) {
    if (IsMarkup(*text)) {
      const SEntity& entity = kEntityTable.Of(*text);
      dest = std::copy_n(entity.name, entity.length, dest);
    } else {
      *dest++ = *text;
    }
  }
  return dest;
}

void PutEscaped(STextSink& sink, const unsigned short* text, const unsigned short* end) {
  const size_t count = static_cast<size_t>(end - text);
  if (sink.units != nullptr) {
    const unsigned short* written = WriteEscaped(sink.units + sink.length, text, count);
    sink.length = static_cast<size_t>(written - sink.units);
  } else {
    sink.length += count + CountAdded(text, count);
  }
}

}  // namespace KEST

extern "C" {

void KestEntityEscape(const unsigned short* text, KEST::TBstr& out) {
  const unsigned int length = KEST::ucslen(text);
  const uint64_t added = KEST::CountAdded(text, length);
  // Text that stays as it is may need no new block.
  if (added == 0) {
    out.Assign(text);
    return;
  }
  unsigned short* fresh = KEST::AllocateText(length + added);
  if (fresh != nullptr) KEST::WriteEscaped(fresh, text, length);
  KEST::ReplaceText(out, fresh);
}

void KestEntityUnescape(const unsigned short* text, KEST::TBstr& out) {
  const int length = KEST::TextLength(text);
  KEST::TScratch scratch(length);
  unsigned short* plain = scratch.Get();
  if (plain == nullptr) return;
  const unsigned short* end = KEST::Unescape(text, text + length, plain);
  out.InternalInit(plain, static_cast<int>(end - plain));
}

}  // extern "C"

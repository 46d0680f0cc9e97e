// The four markup characters of HTML and their entities.

#include "kest/text.h"
#include "string/splice.h"
#include "text/escape.h"
#include "text/scratch.h"

namespace KEST {

namespace {

struct SEntity {
  unsigned short character;
  unsigned short length;
  unsigned short name[6];
};

constexpr SEntity kEntities[] = {
    {'&', 5, {'&', 'a', 'm', 'p', ';'}},
    {'<', 4, {'&', 'l', 't', ';'}},
    {'>', 4, {'&', 'g', 't', ';'}},
    {'"', 6, {'&', 'q', 'u', 'o', 't', ';'}},
};

const SEntity* EntityOf(unsigned short character) {
  for (const SEntity& entity : kEntities) {
    if (entity.character == character) return &entity;
  }
  return nullptr;
}

const SEntity* EntityNamed(const unsigned short* name, ptrdiff_t length) {
  for (const SEntity& entity : kEntities) {
    if (entity.length == length && ucsncmp(entity.name, name, entity.length) == 0) return &entity;
  }
  return nullptr;
}

// Returns the end of what it wrote. An entity without a row above is dropped, and so is one that
// another '&' or the end of the text cuts short.
unsigned short* Unescape(const unsigned short* text, const unsigned short* end,
                         unsigned short* dest) {
  const unsigned short* open = nullptr;
  for (; text != end; ++text) {
    if (*text == '&') {
      open = text;
    } else if (open == nullptr) {
      *dest++ = *text;
    } else if (*text == ';') {
      if (const SEntity* entity = EntityNamed(open, text + 1 - open)) *dest++ = entity->character;
      open = nullptr;
    }
  }
  return dest;
}

}  // namespace

void PutEscaped(STextSink& sink, const unsigned short* text, const unsigned short* end) {
  const unsigned short* run = text;  // what is put as it is
  for (; text != end; ++text) {
    const SEntity* entity = EntityOf(*text);
    if (entity == nullptr) continue;
    sink.Put(run, static_cast<size_t>(text - run));
    sink.Put(entity->name, entity->length);
    run = text + 1;
  }
  sink.Put(run, static_cast<size_t>(end - run));
}

}  // namespace KEST

extern "C" {

void KestEntityEscape(const unsigned short* text, KEST::TBstr& out) {
  // Text that stays as it is may need no new block.
  if (KEST::ucspbrk(text, KEST_TEXT("&<>\"")) == nullptr) {
    out.Assign(text);
    return;
  }
  KEST::BuildText(
      out, [=](KEST::STextSink& sink) { KEST::PutEscaped(sink, text, text + KEST::ucslen(text)); });
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

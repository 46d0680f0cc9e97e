// The versions of escaping for the levels of the processor.

#ifndef KEST_SRC_TEXT_ESCAPE_LEVELS_H
#define KEST_SRC_TEXT_ESCAPE_LEVELS_H

#include <stddef.h>
#include <stdint.h>

namespace KEST {

// What stands for a unit. Of 16 bytes, so that a vector holds it.
struct SEntity {
  unsigned short name[6] = {};
  unsigned short length = 1;
  unsigned short character = 0;
};

// The low four bits of the markup characters are all different: these are their places here. Any
// other place has the name of length 1 that 0 has, and 0 as its character.
struct SEntityTable {
  SEntity entities[16];

  constexpr SEntityTable() {
    Set({{'&', 'a', 'm', 'p', ';'}, 5, '&'});
    Set({{'&', 'l', 't', ';'}, 4, '<'});
    Set({{'&', 'g', 't', ';'}, 4, '>'});
    Set({{'&', 'q', 'u', 'o', 't', ';'}, 6, '"'});
  }
  constexpr void Set(const SEntity& entity) { entities[entity.character & 15] = entity; }
  constexpr const SEntity& Of(unsigned int unit) const { return entities[unit & 15]; }
};

inline constexpr SEntityTable kEntityTable;

// The units that escaping adds to count units of text.
uint64_t CountAddedPlain(const unsigned short* text, size_t count);
uint64_t CountAddedSse2(const unsigned short* text, size_t count);
uint64_t CountAddedAvx2(const unsigned short* text, size_t count);

// Writes count units of text with the markup characters as entities, and nothing behind them.
// Returns the end.
unsigned short* WriteEscapedPlain(unsigned short* dest, const unsigned short* text, size_t count);
unsigned short* WriteEscapedSse2(unsigned short* dest, const unsigned short* text, size_t count);
unsigned short* WriteEscapedAvx2(unsigned short* dest, const unsigned short* text, size_t count);

}  // namespace KEST

#endif  // KEST_SRC_TEXT_ESCAPE_LEVELS_H

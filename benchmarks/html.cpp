// Escaping text for HTML. The peers other than Qt work on bytes.

#if KEST_PEER_GLIB
#include <glib.h>
#endif
#if KEST_PEER_APR
#include <apr_escape.h>
#include <apr_general.h>
#endif
#if KEST_PEER_QT
#include <QString>
#endif

#include "kest/text.h"
#include "support/row.h"

namespace {

// Letters, with one of the four characters in turn at each of the given distance.
std::string TextWithMarkup(size_t length, size_t distance) {
  std::string text(length, ' ');
  for (size_t at = 0; at < length; ++at) text[at] = static_cast<char>('a' + at % 25);
  for (size_t at = distance / 2; at < length; at += distance) text[at] = "&<>\""[at / distance % 4];
  return text;
}

void RegisterEscape(const std::string& row, size_t distance) {
  const std::string text = TextWithMarkup(16384, distance);
  Row(row, "kest", [text](benchmark::State& state) {
    const std::u16string wide(text.begin(), text.end());
    for (auto _ : state) {
      KEST::TBstr escaped;
      KestEntityEscape(reinterpret_cast<const unsigned short*>(wide.c_str()), escaped);
      benchmark::DoNotOptimize(escaped);
    }
  });
#if KEST_PEER_GLIB
  Row(row, "glib", [text](benchmark::State& state) {
    for (auto _ : state) {
      char* escaped = g_markup_escape_text(text.c_str(), -1);
      benchmark::DoNotOptimize(escaped);
      g_free(escaped);
    }
  });
#endif
#if KEST_PEER_APR
  Row(row, "apr", [text](benchmark::State& state) {
    apr_initialize();
    apr_pool_t* pool;
    apr_pool_create(&pool, nullptr);
    for (auto _ : state) {
      benchmark::DoNotOptimize(apr_pescape_entity(pool, text.c_str(), 0));
      apr_pool_clear(pool);
    }
    apr_pool_destroy(pool);
    apr_terminate();
  });
#endif
#if KEST_PEER_QT
  Row(row, "qt", [text](benchmark::State& state) {
    const QString source = QString::fromStdString(text);
    for (auto _ : state) benchmark::DoNotOptimize(source.toHtmlEscaped());
  });
#endif
}

}  // namespace

void RegisterRows() {
  RegisterEscape("escape 16384, 1 in 128", 128);
  RegisterEscape("escape 16384, 1 in 4", 4);
}

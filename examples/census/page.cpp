#include "page.h"

#include "kest/text.h"
#include "report.h"

using KEST::TBstr;

namespace census {

namespace {

const unsigned short* const kNewLine = KEST_TEXT("\n");
const unsigned short* const kHtmlNewLine = KEST_TEXT("\r\n");
// Tags alone, so that the way back to text leaves nothing of them behind: even the title is empty.
const unsigned short* const kHead = KEST_TEXT(
    "<!DOCTYPE html><HTML lang=\"en\"><HEAD><META charset=\"utf-8\"><TITLE></TITLE></HEAD>"
    "<BODY style=\"font-family: monospace; white-space: pre\">");

TBstr Page(const SResult& result) {
  TBstr report = ReportText(result), html;
  report.Replace(kNewLine, kHtmlNewLine);
  KestPlainToHtml(report.GetString(), html);
  html.Replace(KEST_TEXT("<HTML><BODY>"), kHead);
  return html;
}

}  // namespace

void WritePage(OutputFile& out, const SResult& result) { out.Put(Page(result)); }

void WritePageText(OutputFile& out, const SResult& result) {
  TBstr plain;
  KestHtmlToPlain(Page(result).GetString(), plain);
  plain.Replace(kHtmlNewLine, kNewLine);
  out.Put(plain);
}

}  // namespace census

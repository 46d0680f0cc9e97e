// The report as a web page, and the text that such a page holds.

#ifndef CENSUS_PAGE_H
#define CENSUS_PAGE_H

#include "manifests.h"
#include "output.h"

namespace census {

void WritePage(OutputFile& out, const SResult& result);
// The page turned back to text.
void WritePageText(OutputFile& out, const SResult& result);

}  // namespace census

#endif  // CENSUS_PAGE_H

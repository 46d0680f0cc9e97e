// The census for people: the totals and what stands out.

#ifndef CENSUS_REPORT_H
#define CENSUS_REPORT_H

#include "manifests.h"
#include "output.h"

namespace census {

KEST::TBstr ReportText(const SResult& result);
void WriteReport(OutputFile& out, const SResult& result);

}  // namespace census

#endif  // CENSUS_REPORT_H

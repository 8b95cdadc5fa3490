// The series of a study as tables of values, one row per year, quarter or month, for
// `kwx series` and the yearly table of `kwx show`.
#ifndef KWX_CLI_SERIES_TABLE_H_
#define KWX_CLI_SERIES_TABLE_H_

#include <string>
#include <string_view>
#include <vector>

#include "cli/table_output.h"
#include "model/company.h"

namespace kwx::cli {

// The words that name a series on the command line, in the order the help lists them:
// "yearly", "quarterly", "monthly", "pmg".
std::vector<std::string> SeriesWords();

// Raises CommandError (exit 2), naming the known words, unless `word` is one of SeriesWords
// (in any case).
void CheckSeriesWord(std::string_view word);

// The rows of the series `word` names (one of SeriesWords, in any case), in series order,
// under the value columns of its table in statement order. A yearly or PMG row carries its
// fiscal year in its Year column, a quarterly row its fiscal Quarter and Year; a monthly row
// starts with a "Date" column, the day of its closing price (month 0 is the study's latest
// monthly data, month N lies N months before it; blank when the study has no such date).
// Raises as CheckSeriesWord.
ValueTable SeriesTable(const Company& company, std::string_view word);

}  // namespace kwx::cli

#endif  // KWX_CLI_SERIES_TABLE_H_

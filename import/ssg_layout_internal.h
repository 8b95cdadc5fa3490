// The SSG field layout: which line of an SSG data file holds which value of a study. The
// reader (ssg_import.cc) and the writer (export/ssg_export.cc) are both loops over these
// tables, so a position is written down once. Positions are line numbers of files that exist
// in the field: none of them may change.
//
// Position  Value                                   Conversion when read
// --------  --------------------------------------  -------------------------------------------
//   0-  9   Yearly.HighPrice      (oldest first)    number; year i back is at 9 - i
//  10- 19   Yearly.LowPrice                         number
//  20- 29   Yearly.Sales                            number
//  30- 39   Yearly.TaxRate                          number
//  40- 49   Yearly.PretaxIncome                     number
//  50- 59   Yearly.NetIncome                        number
//  60- 69   Yearly.BookValue                        number
//  70- 79   Yearly.EPS                              number
//  80- 89   Yearly.DPS                              number
//  90       sngCurPrice                             number
//  91       sngCurPE                                number
//  92       sngCommDiv, sngCurDiv                   number (both)
//  93       intLastFY                               whole number, the field converted directly
//  94       intNumDataYears                         number rounded to a whole number
//  95- 96   sngHighPrice52W, sngLowPrice52W         number
//  97-101   sngCSO, sngACS, sngPSO, sngAPS, sngTotalDebt   number
// 102       sngPotDilution (recomputed later)       number
// 103-104   sngLatestQRev, sngYearAgoQRev           number
// 106       sngYearAgoQEPS                          number
// 112       sngHighYield                            number
// 124       sngEPSQGrowth                           number
// 125       sngEPSProjGrRate, first estimate        number, rule R2
// 126-127   sngRevQGrowth, sngRevProjGrRate         number
// 128       sngCurYield, second source              number, rule R1
// 129-135   sngAverageYield, sngEPSHistGrowth, sngPEAverage, sngUpDownRatio, sngRev5YrEst,
//           sngAvg5YrPTI, sngTaxRate                number
// 136       sngPrefDiv                              number, rule R3
// 137-148   sngProjLiab, sngProjOutstShares, sngEPSPrefProc, sngEPSVisualEst,
//           sngEPSLastCYTrend, sngRevHistGrowth, sngAvg5YrROE, sngEstLowPrice,
//           sngEstAvgPrice, sngSellLevelPrice, sngProjDivPayout, sngEPSPrevHigh   number
// 151-163   sngCurCash, sngCurAcctRec, sngCurInv, sngCurAssets, sngShortTermDebt,
//           sngCurLiabilities, sngYearAgoCash, sngYearAgoAcctRec, sngYearAgoInv,
//           sngYearAgoAssets, sngYearAgoDebt, sngYearAgoLiab, sngTotalCap   number
// 164-173   Yearly.LongTermDebt                     number
// 174-183   Yearly.CSO                              number
// 184-193   Yearly.CashFlow                         number
// 194-196   sngTotalAssets, sngInterestCov, sngTotalReturn   number
// 197       sngEPSProjGrRate, second estimate       number, rule R2
// 198       sngSevereLowPrice                       number
// 225-226   sngInsideOwnership, sngInstHoldings     number
// 228       sngEPSACE5YrProjGr                      number
// 231       fiscal year-end month, 1 to 12          rule R5
// 235-236   strName, strSymbol                      text
// 237       ExchangeID (the exchange's name)        text
// 238       DataSourceID (the source's name)        text; "S" reads as "S & P"
// 239       datDataCreated, datDataUpdated          date (both)
// 240-241   strVLPage, strCode                      text
// 243       the industry's name                     read by the loader's industry step
// 244-245   sngSplitRatio, sngPrefStock             number
// 246       sngPrefDiv, second source               number, rule R3
// 254       datLatestQEnding                        date, rule R4
// 255       datLastFY                               date, rule R5
// 269-270   latest quarter end as "M/d" and "yyyy"  rule R4
// 275       strSoftwareVersion                      text
// 278       IndustryID (replaced from 243 later)    text
// 279-280   strSPStockRank, strVLFinRating          text
// 285       sngBeta                                 number
// 300-314   judgment values (kJudgmentLayout)       number, or struck-out list as digits
// 346-347   sngEPSACE5YrEst, sngEPSHist5YrGr        number
// 349       sngSPRating                             number
// 353       sngCurYield, first source               number, rule R1
// 355-356   sngRevHist5YrGr, sngEPSHist5YrGrR2      number
// 357       strIndustryGroup                        text
// 363-364   sngEPSNextYearEst, sngRevHist5YrGrR2    number
// 400       SectorID (the sector's name)            text
// 540-542   strAddress1, strPhoneNumber, strContactName   text
// 545       strVLTimeliness, strVLSafety            text (both)
// 546-869   Quarterly, 36 records of 9 values, oldest quarter first   number
// 870-941   Monthly.ClosingPrice, 72 months, oldest first             number
//
// Rules for the values drawn from more than one position (the reader applies them after the
// direct assignments, in this order):
// R1 sngCurYield: field 353 when it holds a positive yield, else field 128. Files from some
//    providers leave 353 blank and carry the yield only at 128.
// R2 sngEPSProjGrRate: when 125 and 197 are both positive, the lower of the two: two
//    estimates of future earnings growth disagree and a study should rest on the cautious one.
//    Otherwise 125 when it is non-zero, else 197.
// R3 sngPrefDiv: field 136; when that reads back as 0, field 246 (the other place a provider
//    puts the preferred dividend).
// R4 datLatestQEnding: field 254; when 254 is no plausible date (IsValidDate), the text
//    "<269>/<270>" (month and day, then year) when that parses to a plausible date.
// R5 datLastFY: field 255; when 255 is no plausible date, field 231 is a month 1 to 12 and
//    intLastFY (field 93, or the value the study had) is a plausible year, the last day of
//    that month in that year: a fiscal year carries the number of the year it ends in.
// R6 Options flags: the four growth lines are shown when their rate is known (non-zero):
//    blnEPSProjLine from sngEPSProjGrRate, blnRevProjLine from sngRevProjGrRate,
//    blnEPSTrendLine from sngEPSHistGrowth, blnRevTrendLine from sngRevHistGrowth.
// R7 intLatestPMGFY: the year after datLastFY, the first year the price-multiple graph
//    projects; intPMGGraphDisplay: 0, the graph's default display, as a file carries no
//    display choice; datLatestQData: datLatestQEnding, the latest quarter the data covers.
// R8 Provider flags from DataSourceID, blanks removed, case-insensitive: holding "S&P" or
//    "SP" sets blnTaxRate false and blnBookVal true; else holding "ValueLine" or "VL" sets
//    both true; else neither changes.
//
// A line break inside a text is written as the character 254 (export/field_text.h), so every
// field is one line; the reader keeps the character as it stands.
//
// Dates are read with the strict date conversion: a field that is not a date leaves the
// property as it was; a date that parses is taken even when implausible, except where a rule
// above prefers another source.
#ifndef KWX_IMPORT_SSG_LAYOUT_INTERNAL_H_
#define KWX_IMPORT_SSG_LAYOUT_INTERNAL_H_

#include <cstdint>
#include <iterator>
#include <string_view>

namespace kwx::ssg {

// How a field's text becomes a property value.
enum class Conversion {
  kNumber,  // the leading numeric part (empty or non-numeric gives 0), stored in the
            // property's type: single, or rounded to a whole number for an integer property
  kWhole,   // the field converted directly; a non-numeric field leaves the property unchanged
  kDate,    // the field converted to a date; a field that is no date leaves it unchanged
  kText,    // the field's text as it stands
  kFlags,   // a struck-out list: one "1" or "0" per item, the first first (FlagsFrom); an
            // empty field gives an empty list
};

// One direct assignment of the company mapping.
struct CompanyField {
  int16_t position;
  std::string_view property;  // a Company property
  Conversion conversion;
};

// The company mapping's direct assignments in ascending field order (the order the reader
// applies them). Where two properties share a position the writer writes the later row.
inline constexpr CompanyField kCompanyLayout[] = {
    {90, "sngCurPrice", Conversion::kNumber},
    {91, "sngCurPE", Conversion::kNumber},
    {92, "sngCommDiv", Conversion::kNumber},
    {92, "sngCurDiv", Conversion::kNumber},
    {93, "intLastFY", Conversion::kWhole},
    {94, "intNumDataYears", Conversion::kNumber},
    {95, "sngHighPrice52W", Conversion::kNumber},
    {96, "sngLowPrice52W", Conversion::kNumber},
    {97, "sngCSO", Conversion::kNumber},
    {98, "sngACS", Conversion::kNumber},
    {99, "sngPSO", Conversion::kNumber},
    {100, "sngAPS", Conversion::kNumber},
    {101, "sngTotalDebt", Conversion::kNumber},
    {102, "sngPotDilution", Conversion::kNumber},
    {103, "sngLatestQRev", Conversion::kNumber},
    {104, "sngYearAgoQRev", Conversion::kNumber},
    {106, "sngYearAgoQEPS", Conversion::kNumber},
    {112, "sngHighYield", Conversion::kNumber},
    {124, "sngEPSQGrowth", Conversion::kNumber},
    {126, "sngRevQGrowth", Conversion::kNumber},
    {127, "sngRevProjGrRate", Conversion::kNumber},
    {129, "sngAverageYield", Conversion::kNumber},
    {130, "sngEPSHistGrowth", Conversion::kNumber},
    {131, "sngPEAverage", Conversion::kNumber},
    {132, "sngUpDownRatio", Conversion::kNumber},
    {133, "sngRev5YrEst", Conversion::kNumber},
    {134, "sngAvg5YrPTI", Conversion::kNumber},
    {135, "sngTaxRate", Conversion::kNumber},
    {136, "sngPrefDiv", Conversion::kNumber},
    {137, "sngProjLiab", Conversion::kNumber},
    {138, "sngProjOutstShares", Conversion::kNumber},
    {139, "sngEPSPrefProc", Conversion::kNumber},
    {140, "sngEPSVisualEst", Conversion::kNumber},
    {141, "sngEPSLastCYTrend", Conversion::kNumber},
    {142, "sngRevHistGrowth", Conversion::kNumber},
    {143, "sngAvg5YrROE", Conversion::kNumber},
    {144, "sngEstLowPrice", Conversion::kNumber},
    {145, "sngEstAvgPrice", Conversion::kNumber},
    {146, "sngSellLevelPrice", Conversion::kNumber},
    {147, "sngProjDivPayout", Conversion::kNumber},
    {148, "sngEPSPrevHigh", Conversion::kNumber},
    {151, "sngCurCash", Conversion::kNumber},
    {152, "sngCurAcctRec", Conversion::kNumber},
    {153, "sngCurInv", Conversion::kNumber},
    {154, "sngCurAssets", Conversion::kNumber},
    {155, "sngShortTermDebt", Conversion::kNumber},
    {156, "sngCurLiabilities", Conversion::kNumber},
    {157, "sngYearAgoCash", Conversion::kNumber},
    {158, "sngYearAgoAcctRec", Conversion::kNumber},
    {159, "sngYearAgoInv", Conversion::kNumber},
    {160, "sngYearAgoAssets", Conversion::kNumber},
    {161, "sngYearAgoDebt", Conversion::kNumber},
    {162, "sngYearAgoLiab", Conversion::kNumber},
    {163, "sngTotalCap", Conversion::kNumber},
    {194, "sngTotalAssets", Conversion::kNumber},
    {195, "sngInterestCov", Conversion::kNumber},
    {196, "sngTotalReturn", Conversion::kNumber},
    {198, "sngSevereLowPrice", Conversion::kNumber},
    {225, "sngInsideOwnership", Conversion::kNumber},
    {226, "sngInstHoldings", Conversion::kNumber},
    {228, "sngEPSACE5YrProjGr", Conversion::kNumber},
    {235, "strName", Conversion::kText},
    {236, "strSymbol", Conversion::kText},
    {237, "ExchangeID", Conversion::kText},
    {238, "DataSourceID", Conversion::kText},
    {239, "datDataCreated", Conversion::kDate},
    {239, "datDataUpdated", Conversion::kDate},
    {240, "strVLPage", Conversion::kText},
    {241, "strCode", Conversion::kText},
    {244, "sngSplitRatio", Conversion::kNumber},
    {245, "sngPrefStock", Conversion::kNumber},
    {254, "datLatestQEnding", Conversion::kDate},
    {255, "datLastFY", Conversion::kDate},
    {275, "strSoftwareVersion", Conversion::kText},
    {278, "IndustryID", Conversion::kText},
    {279, "strSPStockRank", Conversion::kText},
    {280, "strVLFinRating", Conversion::kText},
    {285, "sngBeta", Conversion::kNumber},
    {346, "sngEPSACE5YrEst", Conversion::kNumber},
    {347, "sngEPSHist5YrGr", Conversion::kNumber},
    {349, "sngSPRating", Conversion::kNumber},
    {355, "sngRevHist5YrGr", Conversion::kNumber},
    {356, "sngEPSHist5YrGrR2", Conversion::kNumber},
    {357, "strIndustryGroup", Conversion::kText},
    {363, "sngEPSNextYearEst", Conversion::kNumber},
    {364, "sngRevHist5YrGrR2", Conversion::kNumber},
    {400, "SectorID", Conversion::kText},
    {540, "strAddress1", Conversion::kText},
    {541, "strPhoneNumber", Conversion::kText},
    {542, "strContactName", Conversion::kText},
    {545, "strVLTimeliness", Conversion::kText},
    {545, "strVLSafety", Conversion::kText},
};

// The positions of the rules R1 to R5 and of the industry name.
inline constexpr int16_t kCurYieldField = 353;          // R1, first source
inline constexpr int16_t kCurYieldAltField = 128;       // R1, second source
inline constexpr int16_t kEPSProjGrField = 125;         // R2
inline constexpr int16_t kEPSProjGrAltField = 197;      // R2
inline constexpr int16_t kPrefDivAltField = 246;        // R3 (the first source is row 136)
inline constexpr int16_t kLatestQEndingField = 254;     // R4, also row 254
inline constexpr int16_t kLatestQMonthDayField = 269;   // R4, "M/d"
inline constexpr int16_t kLatestQYearField = 270;       // R4, "yyyy"
inline constexpr int16_t kLastFYField = 255;            // R5, also row 255
inline constexpr int16_t kFiscalYearEndMonthField = 231;  // R5
inline constexpr int16_t kIndustryNameField = 243;

// A block of the yearly series: ten fiscal years, the oldest at `first`, the latest at
// `first` + 9.
struct YearlyBlock {
  int16_t first;
  std::string_view column;  // a Yearly column
};
inline constexpr int16_t kYearsPerBlock = 10;
inline constexpr YearlyBlock kYearlyLayout[] = {
    {0, "HighPrice"},     {10, "LowPrice"},  {20, "Sales"},        {30, "TaxRate"},
    {40, "PretaxIncome"}, {50, "NetIncome"}, {60, "BookValue"},    {70, "EPS"},
    {80, "DPS"},          {164, "LongTermDebt"}, {174, "CSO"},     {184, "CashFlow"},
};

// Which platform's study carries a judgment value.
enum class JudgmentUse { kBoth, kSPOnly };

// One judgment value: a property of one of the Company's judgment groups. The struck-out
// lists are texts of "1"/"0", one character per item, the first item first.
//
// The judgment values an SSG file carries are the price estimates of the analysis group and
// nine struck-out lists: vntStrike, the struck-out years, is the graph group's strYearStrike;
// vntStrikeTaxRate is the preferred procedure's strPrefProcStrikeTaxRate; vntStrikePEHigh and
// vntStrikePELow are the assessment's columns of those names (the SP platform's study only);
// vntStrikeD2Eq, vntStrikePTI, vntStrikeROE, vntStrikeLowPrice and vntStrikePayout are the
// analysis group's lists of those names, which its table does not keep (a study loaded from
// the database has them empty, and writes empty lines for them).
struct JudgmentField {
  int16_t position;
  std::string_view group;     // a judgment group of the Company
  std::string_view property;  // a column of that group
  Conversion conversion;
  JudgmentUse use;
};
inline constexpr JudgmentField kJudgmentLayout[] = {
    {300, "JudgmentAnalysis", "sngProjPriceLow", Conversion::kNumber, JudgmentUse::kBoth},
    {301, "JudgmentAnalysis", "sngProjAvgPEHigh", Conversion::kNumber, JudgmentUse::kBoth},
    {302, "JudgmentAnalysis", "sngProjAvgPELow", Conversion::kNumber, JudgmentUse::kBoth},
    {303, "JudgmentAnalysis", "sngEstLowEPS", Conversion::kNumber, JudgmentUse::kBoth},
    {304, "JudgmentAnalysis", "sngEPSEstHigh", Conversion::kNumber, JudgmentUse::kBoth},
    {305, "JudgmentAnalysis", "sngEstHighPrice", Conversion::kNumber, JudgmentUse::kBoth},
    // The struck-out years of the study graph.
    {306, "JudgmentGraph", "strYearStrike", Conversion::kFlags, JudgmentUse::kBoth},
    // The struck-out tax-rate items of the preferred procedure.
    {307, "JudgmentPrefProc", "strPrefProcStrikeTaxRate", Conversion::kFlags, JudgmentUse::kBoth},
    {308, "JudgmentAssessment", "vntStrikePEHigh", Conversion::kFlags, JudgmentUse::kSPOnly},
    {309, "JudgmentAssessment", "vntStrikePELow", Conversion::kFlags, JudgmentUse::kSPOnly},
    // The analysis lists the database does not keep.
    {310, "JudgmentAnalysis", "vntStrikeD2Eq", Conversion::kFlags, JudgmentUse::kBoth},
    {311, "JudgmentAnalysis", "vntStrikePTI", Conversion::kFlags, JudgmentUse::kBoth},
    {312, "JudgmentAnalysis", "vntStrikeROE", Conversion::kFlags, JudgmentUse::kBoth},
    {313, "JudgmentAnalysis", "vntStrikeLowPrice", Conversion::kFlags, JudgmentUse::kBoth},
    {314, "JudgmentAnalysis", "vntStrikePayout", Conversion::kFlags, JudgmentUse::kBoth},
};

// The shorter-period series: records of the same shape one after another, the oldest first,
// so the latest period is the last record (the yearly blocks' order).
inline constexpr int16_t kQuarterlyFirst = 546;
inline constexpr int16_t kQuarterlyCount = 36;
inline constexpr std::string_view kQuarterlyColumns[] = {
    "EPS", "Sales", "PretaxIncome", "NetIncome", "DPS", "CSO", "TaxRate", "Depreciation",
    "ExDividend"};
inline constexpr int16_t kQuarterlyStride =
    static_cast<int16_t>(std::size(kQuarterlyColumns));
inline constexpr int16_t kMonthlyFirst = kQuarterlyFirst + kQuarterlyCount * kQuarterlyStride;
inline constexpr int16_t kMonthlyCount = 72;

// The number of fields a written file holds: every position above has a line.
inline constexpr int16_t kFieldCount = kMonthlyFirst + kMonthlyCount;
static_assert(kMonthlyFirst == 870 && kFieldCount == 942, "the series positions are persisted");

}  // namespace kwx::ssg

#endif  // KWX_IMPORT_SSG_LAYOUT_INTERNAL_H_

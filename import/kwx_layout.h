// The KWX data-file layout, shared by the reader (import/kwx_import.cc) and the writer
// (export/kwx_export.cc): one row per position, in the order the reader stores them.
//
// The positions, kinds and list lengths are the file format: existing files depend on them,
// none may change. Property names are the model's column names (model/column_lists.h); the
// reader and the writer reach them by name through the record bindings.
//
// Line breaks: a file holds one position per line, so the writer writes a line break inside
// any text position as the character 254 (export/field_text.h, the same rule for SSG files).
// The reader turns 254 back into CR LF in the notes (100) only; elsewhere it stays as read.
#ifndef KWX_IMPORT_KWX_LAYOUT_H_
#define KWX_IMPORT_KWX_LAYOUT_H_

#include <cstdint>
#include <string_view>

#include "model/series_rows.h"

namespace kwx {

// The layout version the writer always writes, and the earlier one the reader completes.
inline constexpr std::string_view kKwxVersionText = "1.01";
inline constexpr float kKwxFirstVersion = 1.0f;
// The highest position of the array.
inline constexpr int16_t kKwxLastPosition = 371;

// How a position's text is read and written.
enum class KwxKind : uint8_t {
  kText,         // stored unchanged
  kNumber,       // leading-number parse, stored as single precision
  kInteger,      // strict 16-bit integer conversion
  kSingle,       // strict single-precision conversion
  kAsIs,         // handed to the property, which converts it
  kDate,         // "MMM/DD/YYYY"; stored only when a date the date check accepts
  kSeries,       // `count` single-precision values separated by tabs
  kFlags,        // `count` Booleans separated by tabs
  kInts,         // `count` 16-bit integers separated by tabs
  // Positions with a rule of their own (see the reader).
  kUpdated,      // 1: datDataUpdated, also copied to datDataCreated
  kLatestMonth,  // 103: datLatestMData, derived from datLastFY when not a date
  kPMGYear,      // 104: intLatestPMGFY, never before the year after datLastFY
  kNotes,        // 100: the notes, line breaks as character 254
  kExtra,        // 101: Company::sngKWXExtra
  kPertCount,    // 370: the number of PERT rows
  kPertRows,     // 371: GraphType, ScaleFactorPositive, ScaleFactorNegative per row, tab-joined
};

// Where a position's value lives.
enum class KwxTarget : uint8_t {
  kCompany,      // a Company record property
  kOptions,      // Company::Options
  kGraph,        // the judgment groups
  kAnalysis,
  kCheckList,
  kPrefProc,
  kStockReport,
  kAssessment,
  kYearly,       // a series column: `name` is the column
  kQuarterly,
  kMonthly,
  kPMG,
  kPERT,
};

// The series table of a series target; empty for the other targets.
inline std::string_view SeriesTable(KwxTarget target) {
  switch (target) {
    case KwxTarget::kYearly: return YearlyRow::Table().name;
    case KwxTarget::kQuarterly: return QuarterlyRow::Table().name;
    case KwxTarget::kMonthly: return MonthlyRow::Table().name;
    case KwxTarget::kPMG: return JudgmentPMGRow::Table().name;
    default: return {};
  }
}

struct KwxField {
  int16_t position;
  KwxKind kind;
  KwxTarget target;
  std::string_view name;
  int16_t count = 0;  // list length of kSeries, kFlags and kInts
};

// clang-format off
// Positions 0 to 156, in store order. Position 0 (the version) is read before the table and
// position 6 (datLastFY) is stored before 103 and 104, which are derived from it.
inline constexpr KwxField kKwxCompanyLayout[] = {
  {1, KwxKind::kUpdated, KwxTarget::kCompany, "datDataUpdated"},
  {106, KwxKind::kDate, KwxTarget::kCompany, "datDataCreated"},
  {2, KwxKind::kText, KwxTarget::kCompany, "strCode"},
  {3, KwxKind::kText, KwxTarget::kCompany, "strName"},
  {4, KwxKind::kText, KwxTarget::kCompany, "strSymbol"},
  {5, KwxKind::kDate, KwxTarget::kCompany, "datLatestQEnding"},
  {6, KwxKind::kDate, KwxTarget::kCompany, "datLastFY"},
  {7, KwxKind::kNumber, KwxTarget::kCompany, "intLastFY"},
  {8, KwxKind::kNumber, KwxTarget::kCompany, "intNumDataYears"},
  {9, KwxKind::kDate, KwxTarget::kCompany, "datLatestQData"},
  {103, KwxKind::kLatestMonth, KwxTarget::kCompany, "datLatestMData"},
  {104, KwxKind::kPMGYear, KwxTarget::kCompany, "intLatestPMGFY"},
  {105, KwxKind::kInteger, KwxTarget::kCompany, "intPMGGraphDisplay"},
  {102, KwxKind::kText, KwxTarget::kCompany, "DataSourceID"},
  {10, KwxKind::kText, KwxTarget::kCompany, "SectorID"},
  {11, KwxKind::kText, KwxTarget::kCompany, "ExchangeID"},
  {12, KwxKind::kText, KwxTarget::kCompany, "IndustryID"},
  {13, KwxKind::kNumber, KwxTarget::kCompany, "sngCurPrice"},
  {14, KwxKind::kNumber, KwxTarget::kCompany, "sngCurPE"},
  {15, KwxKind::kNumber, KwxTarget::kCompany, "sngCurDiv"},
  {16, KwxKind::kNumber, KwxTarget::kCompany, "sngHighPrice52W"},
  {17, KwxKind::kNumber, KwxTarget::kCompany, "sngLowPrice52W"},
  {18, KwxKind::kNumber, KwxTarget::kCompany, "sngCSO"},
  {19, KwxKind::kNumber, KwxTarget::kCompany, "sngACS"},
  {20, KwxKind::kNumber, KwxTarget::kCompany, "sngPSO"},
  {21, KwxKind::kNumber, KwxTarget::kCompany, "sngAPS"},
  {22, KwxKind::kNumber, KwxTarget::kCompany, "sngTotalDebt"},
  {23, KwxKind::kNumber, KwxTarget::kCompany, "sngPotDilution"},
  {24, KwxKind::kNumber, KwxTarget::kCompany, "sngLatestQRev"},
  {25, KwxKind::kNumber, KwxTarget::kCompany, "sngYearAgoQRev"},
  {26, KwxKind::kNumber, KwxTarget::kCompany, "sngLatestQEPS"},
  {27, KwxKind::kNumber, KwxTarget::kCompany, "sngYearAgoQEPS"},
  {28, KwxKind::kNumber, KwxTarget::kCompany, "sngEPSQGrowth"},
  {29, KwxKind::kNumber, KwxTarget::kCompany, "sngEPSProjGrRate"},
  {101, KwxKind::kExtra, KwxTarget::kCompany, "sngKWXExtra"},
  {30, KwxKind::kNumber, KwxTarget::kCompany, "sngRevQGrowth"},
  {31, KwxKind::kNumber, KwxTarget::kCompany, "sngRevProjGrRate"},
  {32, KwxKind::kNumber, KwxTarget::kCompany, "sngCurYield"},
  {33, KwxKind::kNumber, KwxTarget::kCompany, "sngAverageYield"},
  {34, KwxKind::kNumber, KwxTarget::kCompany, "sngHighYield"},
  {35, KwxKind::kNumber, KwxTarget::kCompany, "sngEPSHistGrowth"},
  {36, KwxKind::kNumber, KwxTarget::kCompany, "sngPEAverage"},
  {37, KwxKind::kNumber, KwxTarget::kCompany, "sngUpDownRatio"},
  {38, KwxKind::kNumber, KwxTarget::kCompany, "sngRev5YrEst"},
  {39, KwxKind::kNumber, KwxTarget::kCompany, "sngAvg5YrPTI"},
  {40, KwxKind::kNumber, KwxTarget::kCompany, "sngTaxRate"},
  {41, KwxKind::kNumber, KwxTarget::kCompany, "sngPrefDiv"},
  {42, KwxKind::kNumber, KwxTarget::kCompany, "sngProjLiab"},
  {43, KwxKind::kNumber, KwxTarget::kCompany, "sngProjOutstShares"},
  {44, KwxKind::kNumber, KwxTarget::kCompany, "sngEPSPrefProc"},
  {45, KwxKind::kNumber, KwxTarget::kCompany, "sngEPSVisualEst"},
  {46, KwxKind::kNumber, KwxTarget::kCompany, "sngEPSLastCYTrend"},
  {47, KwxKind::kNumber, KwxTarget::kCompany, "sngRevHistGrowth"},
  {48, KwxKind::kNumber, KwxTarget::kCompany, "sngAvg5YrROE"},
  {49, KwxKind::kNumber, KwxTarget::kCompany, "sngEstLowPrice"},
  {50, KwxKind::kNumber, KwxTarget::kCompany, "sngEstAvgPrice"},
  {51, KwxKind::kNumber, KwxTarget::kCompany, "sngSellLevelPrice"},
  {52, KwxKind::kNumber, KwxTarget::kCompany, "sngProjDivPayout"},
  {53, KwxKind::kNumber, KwxTarget::kCompany, "sngEPSPrevHigh"},
  {54, KwxKind::kNumber, KwxTarget::kCompany, "sngCurCash"},
  {55, KwxKind::kNumber, KwxTarget::kCompany, "sngCurAcctRec"},
  {56, KwxKind::kNumber, KwxTarget::kCompany, "sngCurInv"},
  {57, KwxKind::kNumber, KwxTarget::kCompany, "sngCurAssets"},
  {58, KwxKind::kNumber, KwxTarget::kCompany, "sngShortTermDebt"},
  {59, KwxKind::kNumber, KwxTarget::kCompany, "sngCurLiabilities"},
  {60, KwxKind::kNumber, KwxTarget::kCompany, "sngYearAgoCash"},
  {61, KwxKind::kNumber, KwxTarget::kCompany, "sngYearAgoAcctRec"},
  {62, KwxKind::kNumber, KwxTarget::kCompany, "sngYearAgoInv"},
  {63, KwxKind::kNumber, KwxTarget::kCompany, "sngYearAgoAssets"},
  {64, KwxKind::kNumber, KwxTarget::kCompany, "sngYearAgoDebt"},
  {65, KwxKind::kNumber, KwxTarget::kCompany, "sngYearAgoLiab"},
  {66, KwxKind::kNumber, KwxTarget::kCompany, "sngTotalCap"},
  {67, KwxKind::kNumber, KwxTarget::kCompany, "sngTotalAssets"},
  {68, KwxKind::kNumber, KwxTarget::kCompany, "sngInterestCov"},
  {69, KwxKind::kNumber, KwxTarget::kCompany, "sngTotalReturn"},
  {70, KwxKind::kNumber, KwxTarget::kCompany, "sngSevereLowPrice"},
  {71, KwxKind::kNumber, KwxTarget::kCompany, "sngInsideOwnership"},
  {72, KwxKind::kNumber, KwxTarget::kCompany, "sngInstHoldings"},
  {73, KwxKind::kNumber, KwxTarget::kCompany, "sngEPSACE5YrProjGr"},
  {74, KwxKind::kText, KwxTarget::kCompany, "strVLPage"},
  {75, KwxKind::kNumber, KwxTarget::kCompany, "sngSplitRatio"},
  {76, KwxKind::kNumber, KwxTarget::kCompany, "sngPrefStock"},
  {77, KwxKind::kText, KwxTarget::kCompany, "strSPStockRank"},
  {78, KwxKind::kText, KwxTarget::kCompany, "strVLFinRating"},
  {79, KwxKind::kNumber, KwxTarget::kCompany, "sngBeta"},
  {80, KwxKind::kNumber, KwxTarget::kCompany, "sngEPSACE5YrEst"},
  {81, KwxKind::kNumber, KwxTarget::kCompany, "sngEPSHist5YrGr"},
  {82, KwxKind::kNumber, KwxTarget::kCompany, "sngSPRating"},
  {83, KwxKind::kNumber, KwxTarget::kCompany, "sngRevHist5YrGr"},
  {84, KwxKind::kNumber, KwxTarget::kCompany, "sngEPSHist5YrGrR2"},
  {85, KwxKind::kText, KwxTarget::kCompany, "strIndustryGroup"},
  {86, KwxKind::kNumber, KwxTarget::kCompany, "sngEPSNextYearEst"},
  {87, KwxKind::kNumber, KwxTarget::kCompany, "sngRevHist5YrGrR2"},
  {91, KwxKind::kText, KwxTarget::kCompany, "strAddress1"},
  {92, KwxKind::kText, KwxTarget::kCompany, "strAddress2"},
  {93, KwxKind::kText, KwxTarget::kCompany, "strCity"},
  {94, KwxKind::kText, KwxTarget::kCompany, "strProvState"},
  {95, KwxKind::kText, KwxTarget::kCompany, "strPostalCode"},
  {96, KwxKind::kText, KwxTarget::kCompany, "strCountry"},
  {97, KwxKind::kText, KwxTarget::kCompany, "strURLAddress"},
  {98, KwxKind::kText, KwxTarget::kCompany, "strPhoneNumber"},
  {99, KwxKind::kText, KwxTarget::kCompany, "strContactName"},
  {88, KwxKind::kText, KwxTarget::kCompany, "strVLTimeliness"},
  {89, KwxKind::kText, KwxTarget::kCompany, "strVLSafety"},
  {90, KwxKind::kNumber, KwxTarget::kCompany, "sngCommDiv"},
  {100, KwxKind::kNotes, KwxTarget::kCompany, "Notes"},
  // Yearly series, 10 values each (element 0 the latest fiscal year).
  {148, KwxKind::kSeries, KwxTarget::kYearly, "HighPrice", 10},
  {145, KwxKind::kSeries, KwxTarget::kYearly, "LowPrice", 10},
  {149, KwxKind::kSeries, KwxTarget::kYearly, "Sales", 10},
  {146, KwxKind::kSeries, KwxTarget::kYearly, "PretaxIncome", 10},
  {147, KwxKind::kSeries, KwxTarget::kYearly, "NetIncome", 10},
  {144, KwxKind::kSeries, KwxTarget::kYearly, "EPS", 10},
  {151, KwxKind::kSeries, KwxTarget::kYearly, "DPS", 10},
  {152, KwxKind::kSeries, KwxTarget::kYearly, "LongTermDebt", 10},
  {156, KwxKind::kSeries, KwxTarget::kYearly, "CSO", 10},
  {150, KwxKind::kSeries, KwxTarget::kYearly, "CashFlow", 10},
  {154, KwxKind::kSeries, KwxTarget::kYearly, "TaxRate", 10},
  {155, KwxKind::kSeries, KwxTarget::kYearly, "BookValue", 10},
  {153, KwxKind::kSeries, KwxTarget::kYearly, "CommonEquity", 10},
  // Quarterly series, 36 values each.
  {129, KwxKind::kSeries, KwxTarget::kQuarterly, "EPS", 36},
  {131, KwxKind::kSeries, KwxTarget::kQuarterly, "Sales", 36},
  {130, KwxKind::kSeries, KwxTarget::kQuarterly, "PretaxIncome", 36},
  {132, KwxKind::kSeries, KwxTarget::kQuarterly, "NetIncome", 36},
  {133, KwxKind::kSeries, KwxTarget::kQuarterly, "DPS", 36},
  {134, KwxKind::kSeries, KwxTarget::kQuarterly, "CSO", 36},
  {135, KwxKind::kSeries, KwxTarget::kQuarterly, "TaxRate", 36},
  {136, KwxKind::kSeries, KwxTarget::kQuarterly, "Depreciation", 36},
  {137, KwxKind::kSeries, KwxTarget::kQuarterly, "ExDividend", 36},
  // Monthly closing prices, 72 values.
  {124, KwxKind::kSeries, KwxTarget::kMonthly, "ClosingPrice", 72},
};

// Positions 159 to 371, in store order, group by group. Each group is filled as a fresh object
// and then replaces the Company's; properties without a position keep their zero value.
//
// Rules settled here for positions whose target the format leaves open:
//  - Check list (159-173): the file's fifteen positions meet fourteen columns. 159 and 161-163
//    are the first four texts, 164-167 the four values after them, 170-173 the next four texts,
//    and 160, the only nine-item list, holds the struck-out items (strSCLStrike).
//    strSCLGrowthDiscuss has no position: a KWX file does not carry it. The two five-item
//    lists 168 and 169 stand just before the revenue and EPS objectives (170, 171): they are
//    the struck-out items of those objectives, vntSCLRevStrike and vntSCLEPSStrike, which the
//    group carries but its table does not keep.
//  - Analysis (225-231): the first two of the seven five-item lists are the struck-out items
//    of parts 2 and 3 (strPart2Strike, strPart3Strike); 227-231 are the five lists the table
//    does not keep, in the order the SSG judgment values name them: vntStrikeD2Eq,
//    vntStrikePTI, vntStrikeROE, vntStrikeLowPrice, vntStrikePayout.
//  - Preferred procedure (239-241): the two numbers are the first two columns, the list is the
//    struck-out tax rates.
//  - Stock report 250: the thirteen integers are kept in strSSR0GAP as their texts joined by
//    tabs, the same text the position carries.
//  - PERT (370, 371): 370 the number of rows, 371 each row's GraphType, ScaleFactorPositive and
//    ScaleFactorNegative, all rows' values joined by tabs.
inline constexpr KwxField kKwxJudgmentLayout[] = {
  // Check list.
  {159, KwxKind::kText, KwxTarget::kCheckList, "strSCLReason"},
  {160, KwxKind::kFlags, KwxTarget::kCheckList, "strSCLStrike", 9},
  {161, KwxKind::kText, KwxTarget::kCheckList, "strSCLCompare"},
  {162, KwxKind::kText, KwxTarget::kCheckList, "strSCLStockSold"},
  {163, KwxKind::kText, KwxTarget::kCheckList, "strSCLUnusualPE"},
  {164, KwxKind::kAsIs, KwxTarget::kCheckList, "intSCLPastCompare"},
  {165, KwxKind::kAsIs, KwxTarget::kCheckList, "blnSCLPEContinue"},
  {166, KwxKind::kNumber, KwxTarget::kCheckList, "sngSCLPELow"},
  {167, KwxKind::kNumber, KwxTarget::kCheckList, "sngSCLPEHigh"},
  {168, KwxKind::kFlags, KwxTarget::kCheckList, "vntSCLRevStrike", 5},
  {169, KwxKind::kFlags, KwxTarget::kCheckList, "vntSCLEPSStrike", 5},
  {170, KwxKind::kText, KwxTarget::kCheckList, "strSCLRevObj"},
  {171, KwxKind::kText, KwxTarget::kCheckList, "strSCLEPSObj"},
  {172, KwxKind::kText, KwxTarget::kCheckList, "strSCLProjEPSObj"},
  {173, KwxKind::kText, KwxTarget::kCheckList, "strSCLStockPrice"},
  // Graph.
  {179, KwxKind::kNumber, KwxTarget::kGraph, "sngEPSProjLabel1X"},
  {180, KwxKind::kNumber, KwxTarget::kGraph, "sngEPSProjLabel1Y"},
  {181, KwxKind::kNumber, KwxTarget::kGraph, "sngEPSProjLabel2X"},
  {182, KwxKind::kNumber, KwxTarget::kGraph, "sngEPSProjLabel2Y"},
  {183, KwxKind::kNumber, KwxTarget::kGraph, "sngRevProjLabel1X"},
  {184, KwxKind::kNumber, KwxTarget::kGraph, "sngRevProjLabel1Y"},
  {185, KwxKind::kNumber, KwxTarget::kGraph, "sngRevProjLabel2X"},
  {186, KwxKind::kNumber, KwxTarget::kGraph, "sngRevProjLabel2Y"},
  {187, KwxKind::kNumber, KwxTarget::kGraph, "sngRevTrendX1"},
  {188, KwxKind::kNumber, KwxTarget::kGraph, "sngRevTrendY1"},
  {189, KwxKind::kNumber, KwxTarget::kGraph, "sngRevTrendX2"},
  {190, KwxKind::kNumber, KwxTarget::kGraph, "sngRevTrendY2"},
  {191, KwxKind::kNumber, KwxTarget::kGraph, "sngEPSTrendX1"},
  {192, KwxKind::kNumber, KwxTarget::kGraph, "sngEPSTrendY1"},
  {193, KwxKind::kNumber, KwxTarget::kGraph, "sngEPSTrendX2"},
  {194, KwxKind::kNumber, KwxTarget::kGraph, "sngEPSTrendY2"},
  {195, KwxKind::kNumber, KwxTarget::kGraph, "sngRevProjY1"},
  {196, KwxKind::kNumber, KwxTarget::kGraph, "sngRevProjY2"},
  {197, KwxKind::kNumber, KwxTarget::kGraph, "sngEPSProjY1"},
  {198, KwxKind::kNumber, KwxTarget::kGraph, "sngEPSProjY2"},
  {199, KwxKind::kNumber, KwxTarget::kGraph, "sngFactorPrice52W"},
  {200, KwxKind::kNumber, KwxTarget::kGraph, "sngFactorEPS"},
  {201, KwxKind::kNumber, KwxTarget::kGraph, "sngFactorPTI"},
  {202, KwxKind::kNumber, KwxTarget::kGraph, "sngFactorRev"},
  {204, KwxKind::kNumber, KwxTarget::kGraph, "sngEPSMinProjY1"},
  {205, KwxKind::kNumber, KwxTarget::kGraph, "sngEPSMinProjY2"},
  {203, KwxKind::kFlags, KwxTarget::kGraph, "strYearStrike", 10},
  // Analysis.
  {209, KwxKind::kText, KwxTarget::kAnalysis, "strTrendROE"},
  {210, KwxKind::kText, KwxTarget::kAnalysis, "strTrendPTI"},
  {211, KwxKind::kText, KwxTarget::kAnalysis, "strTrendDebt2Eq"},
  {232, KwxKind::kSingle, KwxTarget::kAnalysis, "sngIndusAvgPTI"},
  {233, KwxKind::kSingle, KwxTarget::kAnalysis, "sngIndusAvgROE"},
  {234, KwxKind::kSingle, KwxTarget::kAnalysis, "sngIndusAvgDebt2Eq"},
  {212, KwxKind::kAsIs, KwxTarget::kAnalysis, "intLeadPeriod"},
  {213, KwxKind::kNumber, KwxTarget::kAnalysis, "sngAvgPEHigh"},
  {214, KwxKind::kNumber, KwxTarget::kAnalysis, "sngAvgLowPrice"},
  {215, KwxKind::kNumber, KwxTarget::kAnalysis, "sngAvgPayout"},
  {216, KwxKind::kNumber, KwxTarget::kAnalysis, "sngAvgPELow"},
  {217, KwxKind::kNumber, KwxTarget::kAnalysis, "sngProjAvgLowPrice"},
  {218, KwxKind::kNumber, KwxTarget::kAnalysis, "sngProjPriceLow"},
  {219, KwxKind::kNumber, KwxTarget::kAnalysis, "sngProjAvgPEHigh"},
  {220, KwxKind::kNumber, KwxTarget::kAnalysis, "sngProjAvgPELow"},
  {221, KwxKind::kNumber, KwxTarget::kAnalysis, "sngEstLowEPS"},
  {222, KwxKind::kNumber, KwxTarget::kAnalysis, "sngEPSEstHigh"},
  {235, KwxKind::kNumber, KwxTarget::kAnalysis, "sngEPSMinEstHigh"},
  {223, KwxKind::kNumber, KwxTarget::kAnalysis, "sngEstHighPrice"},
  {236, KwxKind::kNumber, KwxTarget::kAnalysis, "sngEstMinHighPrice"},
  {237, KwxKind::kNumber, KwxTarget::kAnalysis, "sngSelHighPrice"},
  {238, KwxKind::kNumber, KwxTarget::kAnalysis, "sngSelLowPrice"},
  {224, KwxKind::kNumber, KwxTarget::kAnalysis, "sngRecentLow"},
  {225, KwxKind::kFlags, KwxTarget::kAnalysis, "strPart2Strike", 5},
  {226, KwxKind::kFlags, KwxTarget::kAnalysis, "strPart3Strike", 5},
  {227, KwxKind::kFlags, KwxTarget::kAnalysis, "vntStrikeD2Eq", 5},
  {228, KwxKind::kFlags, KwxTarget::kAnalysis, "vntStrikePTI", 5},
  {229, KwxKind::kFlags, KwxTarget::kAnalysis, "vntStrikeROE", 5},
  {230, KwxKind::kFlags, KwxTarget::kAnalysis, "vntStrikeLowPrice", 5},
  {231, KwxKind::kFlags, KwxTarget::kAnalysis, "vntStrikePayout", 5},
  // Preferred procedure.
  {239, KwxKind::kNumber, KwxTarget::kPrefProc, "sngPrefProcTaxRate"},
  {240, KwxKind::kNumber, KwxTarget::kPrefProc, "sngPrefProcPTIRev"},
  {241, KwxKind::kFlags, KwxTarget::kPrefProc, "strPrefProcStrikeTaxRate", 5},
  // Stock report.
  {249, KwxKind::kText, KwxTarget::kStockReport, "strSSR0a"},
  {250, KwxKind::kInts, KwxTarget::kStockReport, "strSSR0GAP", 13},
  {251, KwxKind::kText, KwxTarget::kStockReport, "strSSR1a"},
  {252, KwxKind::kText, KwxTarget::kStockReport, "strSSR1b"},
  {253, KwxKind::kText, KwxTarget::kStockReport, "strSSR1c"},
  {254, KwxKind::kText, KwxTarget::kStockReport, "strSSR1d"},
  {255, KwxKind::kText, KwxTarget::kStockReport, "strSSR1e"},
  {256, KwxKind::kText, KwxTarget::kStockReport, "strSSR1f"},
  {257, KwxKind::kText, KwxTarget::kStockReport, "strSSR1g"},
  {258, KwxKind::kText, KwxTarget::kStockReport, "strSSR1h"},
  {259, KwxKind::kText, KwxTarget::kStockReport, "strSSR1i"},
  {260, KwxKind::kText, KwxTarget::kStockReport, "strSSR1j"},
  {261, KwxKind::kText, KwxTarget::kStockReport, "strSSR2a"},
  {262, KwxKind::kText, KwxTarget::kStockReport, "strSSR2c"},
  {263, KwxKind::kText, KwxTarget::kStockReport, "strSSR2d"},
  {264, KwxKind::kText, KwxTarget::kStockReport, "strSSR2h"},
  {265, KwxKind::kText, KwxTarget::kStockReport, "strSSR2i"},
  {266, KwxKind::kText, KwxTarget::kStockReport, "strSSR2j"},
  {267, KwxKind::kText, KwxTarget::kStockReport, "strSSR3a"},
  {268, KwxKind::kText, KwxTarget::kStockReport, "strSSR3b"},
  {269, KwxKind::kText, KwxTarget::kStockReport, "strSSR3c"},
  {270, KwxKind::kText, KwxTarget::kStockReport, "strSSR3g"},
  {271, KwxKind::kText, KwxTarget::kStockReport, "strSSR4b"},
  {272, KwxKind::kText, KwxTarget::kStockReport, "strSSR4d"},
  {273, KwxKind::kText, KwxTarget::kStockReport, "strSSR4e"},
  {274, KwxKind::kText, KwxTarget::kStockReport, "strSSR5a"},
  {275, KwxKind::kText, KwxTarget::kStockReport, "strSSR5b"},
  {276, KwxKind::kText, KwxTarget::kStockReport, "strSSR5c"},
  {277, KwxKind::kText, KwxTarget::kStockReport, "strSSR5d"},
  {278, KwxKind::kText, KwxTarget::kStockReport, "strSSR5e"},
  {279, KwxKind::kText, KwxTarget::kStockReport, "strSSR5f"},
  {280, KwxKind::kText, KwxTarget::kStockReport, "strSSR5g"},
  {281, KwxKind::kText, KwxTarget::kStockReport, "strSSR5h"},
  {282, KwxKind::kText, KwxTarget::kStockReport, "strSSR5i"},
  {283, KwxKind::kText, KwxTarget::kStockReport, "strSSR5j"},
  {284, KwxKind::kText, KwxTarget::kStockReport, "strSSR5k"},
  {285, KwxKind::kText, KwxTarget::kStockReport, "strSSR6b"},
  {286, KwxKind::kText, KwxTarget::kStockReport, "strSSR6c"},
  {287, KwxKind::kText, KwxTarget::kStockReport, "strSSR6d"},
  {288, KwxKind::kText, KwxTarget::kStockReport, "strSSR6e"},
  {289, KwxKind::kText, KwxTarget::kStockReport, "strSSR6f"},
  {290, KwxKind::kText, KwxTarget::kStockReport, "strSSR6g"},
  {291, KwxKind::kText, KwxTarget::kStockReport, "strSSR6h"},
  {292, KwxKind::kText, KwxTarget::kStockReport, "strSSR6i"},
  {293, KwxKind::kText, KwxTarget::kStockReport, "strSSR6j"},
  {294, KwxKind::kText, KwxTarget::kStockReport, "strSSR7a"},
  {295, KwxKind::kText, KwxTarget::kStockReport, "strSSR7b"},
  {296, KwxKind::kText, KwxTarget::kStockReport, "strSSR7c"},
  {297, KwxKind::kText, KwxTarget::kStockReport, "strSSR7d"},
  {298, KwxKind::kNumber, KwxTarget::kStockReport, "sngSSR8b"},
  {299, KwxKind::kNumber, KwxTarget::kStockReport, "sngSSR8c"},
  {300, KwxKind::kNumber, KwxTarget::kStockReport, "sngSSR8d"},
  {301, KwxKind::kText, KwxTarget::kStockReport, "strSSR8e"},
  {302, KwxKind::kText, KwxTarget::kStockReport, "strSSR8f"},
  {303, KwxKind::kDate, KwxTarget::kStockReport, "datSSR8g"},
  {304, KwxKind::kNumber, KwxTarget::kStockReport, "sngSSR8h"},
  // Assessment.
  {339, KwxKind::kText, KwxTarget::kAssessment, "strSalesIncreasing"},
  {340, KwxKind::kNumber, KwxTarget::kAssessment, "sngProjSalesGrowth"},
  {341, KwxKind::kFlags, KwxTarget::kAssessment, "vntContribFactors", 5},
  {342, KwxKind::kText, KwxTarget::kAssessment, "strOtherFactors"},
  {343, KwxKind::kText, KwxTarget::kAssessment, "strEPSIncreasing"},
  {344, KwxKind::kNumber, KwxTarget::kAssessment, "sngProjEPSGrowth"},
  {345, KwxKind::kText, KwxTarget::kAssessment, "strHistSalesEPSGrowth"},
  {346, KwxKind::kText, KwxTarget::kAssessment, "strHistEPSGrowthToSales"},
  {347, KwxKind::kText, KwxTarget::kAssessment, "strSalesEPSObjectives"},
  {348, KwxKind::kFlags, KwxTarget::kAssessment, "vntStrikePEHigh", 5},
  {349, KwxKind::kFlags, KwxTarget::kAssessment, "vntStrikePELow", 5},
  {350, KwxKind::kNumber, KwxTarget::kAssessment, "sngHistAvgPE"},
  {351, KwxKind::kText, KwxTarget::kAssessment, "strPriceAppreciation"},
  {352, KwxKind::kText, KwxTarget::kAssessment, "strCurPECompareAvgPE"},
  {353, KwxKind::kText, KwxTarget::kAssessment, "strFactorsToContinue"},
  // Options.
  {309, KwxKind::kAsIs, KwxTarget::kOptions, "blnBookVal"},
  {310, KwxKind::kAsIs, KwxTarget::kOptions, "blnTaxRate"},
  {311, KwxKind::kAsIs, KwxTarget::kOptions, "blnLockBasicInfo"},
  {312, KwxKind::kAsIs, KwxTarget::kOptions, "blnRevPlot"},
  {313, KwxKind::kAsIs, KwxTarget::kOptions, "blnRevTrendLine"},
  {314, KwxKind::kAsIs, KwxTarget::kOptions, "blnRevProjLine"},
  {315, KwxKind::kAsIs, KwxTarget::kOptions, "blnEPSPlot"},
  {316, KwxKind::kAsIs, KwxTarget::kOptions, "blnEPSTrendLine"},
  {317, KwxKind::kAsIs, KwxTarget::kOptions, "blnEPSProjLine"},
  {318, KwxKind::kAsIs, KwxTarget::kOptions, "blnPricePlot"},
  {319, KwxKind::kAsIs, KwxTarget::kOptions, "blnPTIPlot"},
  {320, KwxKind::kAsIs, KwxTarget::kOptions, "intUnit"},
  {321, KwxKind::kAsIs, KwxTarget::kOptions, "intPEMethod"},
  {322, KwxKind::kText, KwxTarget::kOptions, "strCurSymbol"},
  {323, KwxKind::kAsIs, KwxTarget::kOptions, "blnDebt2Eq"},
  {324, KwxKind::kAsIs, KwxTarget::kOptions, "blnPart3Extra"},
  {325, KwxKind::kAsIs, KwxTarget::kOptions, "intReportPeriod"},
  {326, KwxKind::kAsIs, KwxTarget::kOptions, "blnEPSMinProjLine"},
  // PMG settings: the four per-year lists, then the scale factors, which the model keeps with
  // the options.
  {359, KwxKind::kSeries, KwxTarget::kPMG, "HiPE", 5},
  {360, KwxKind::kSeries, KwxTarget::kPMG, "LowPE", 5},
  {361, KwxKind::kSeries, KwxTarget::kPMG, "BuyBelow", 5},
  {362, KwxKind::kSeries, KwxTarget::kPMG, "SellAbove", 5},
  {363, KwxKind::kNumber, KwxTarget::kOptions, "sngPMGPEScaleFactor"},
  {364, KwxKind::kNumber, KwxTarget::kOptions, "sngPMGPriceZoneScaleFactor"},
  {365, KwxKind::kNumber, KwxTarget::kOptions, "sngPMGRVScaleFactor"},
  // PERT settings.
  {370, KwxKind::kPertCount, KwxTarget::kPERT, "JudgmentPERT"},
  {371, KwxKind::kPertRows, KwxTarget::kPERT, "JudgmentPERT"},
};
// clang-format on

// The positions 1.01 added, which the reader fills for a 1.0 file before mapping: with the
// integer 0, except 326 (Boolean False) and 103, 104 (empty text).
inline constexpr int16_t kKwxZeroedIn101[] = {101, 105, 204, 205, 232, 233,
                                              234, 235, 236, 237, 238};
inline constexpr int16_t kKwxFalseIn101 = 326;
inline constexpr int16_t kKwxEmptiedIn101[] = {103, 104};

}  // namespace kwx

#endif  // KWX_IMPORT_KWX_LAYOUT_H_

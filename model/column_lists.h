// The column list of every database table, written once. Each list is an X-macro
// X(name, ColumnType, insert position[, PlatformUse]) in update-statement order; the lists are
// expanded into the typed members of the record classes, into the constexpr column
// declarations of the schema and into the by-name bindings, so a name appears only here.
//
// The update order, the insert positions and the names are persisted in the statement texts
// and in existing databases: none of them may change.
#ifndef KWX_MODEL_COLUMN_LISTS_H_
#define KWX_MODEL_COLUMN_LISTS_H_

// clang-format off

// The company record: the 107 columns of table Company in update-statement order. The third
// value is the column's place in the insert statement, which orders ExchangeID, strSymbol and
// strVLTimeliness differently. Both orders are persisted in statement texts: must not change.
// CompanyID is the table's key and is not listed.
#define KWX_COMPANY_COLUMNS(X) \
  X(datDataCreated, Date, 1) \
  X(datDataUpdated, Date, 2) \
  X(datLastFY, Date, 3) \
  X(datLatestQEnding, Date, 4) \
  X(intNumDataYears, Integer, 5) \
  X(sngACS, Single, 6) \
  X(sngAPS, Single, 7) \
  X(sngAverageYield, Single, 8) \
  X(sngAvg5YrPTI, Single, 9) \
  X(sngAvg5YrROE, Single, 10) \
  X(sngBeta, Single, 11) \
  X(sngCSO, Single, 12) \
  X(sngCurAcctRec, Single, 13) \
  X(sngCurAssets, Single, 14) \
  X(sngCurCash, Single, 15) \
  X(sngCurDiv, Single, 16) \
  X(sngCurInv, Single, 17) \
  X(sngCurLiabilities, Single, 18) \
  X(sngCurPE, Single, 19) \
  X(sngCurPrice, Single, 20) \
  X(sngCurYield, Single, 21) \
  X(sngEPSACE5YrEst, Single, 22) \
  X(sngEPSACE5YrProjGr, Single, 23) \
  X(sngEPSHist5YrGr, Single, 24) \
  X(sngEPSHist5YrGrR2, Single, 25) \
  X(sngEPSHistGrowth, Single, 26) \
  X(sngEPSLastCYTrend, Single, 27) \
  X(sngEPSNextYearEst, Single, 28) \
  X(sngEPSPrefProc, Single, 29) \
  X(sngEPSPrevHigh, Single, 30) \
  X(sngEPSProjGrRate, Single, 31) \
  X(sngEPSQGrowth, Single, 32) \
  X(sngEPSVisualEst, Single, 33) \
  X(sngEstAvgPrice, Single, 34) \
  X(sngEstLowPrice, Single, 35) \
  X(sngHighPrice52W, Single, 36) \
  X(sngHighYield, Single, 37) \
  X(sngInsideOwnership, Single, 38) \
  X(sngInstHoldings, Single, 39) \
  X(sngInterestCov, Single, 40) \
  X(sngLatestQEPS, Single, 41) \
  X(sngLatestQRev, Single, 42) \
  X(sngLowPrice52W, Single, 43) \
  X(sngPEAverage, Single, 44) \
  X(sngPotDilution, Single, 45) \
  X(sngPrefDiv, Single, 46) \
  X(sngPrefStock, Single, 47) \
  X(sngProjDivPayout, Single, 48) \
  X(sngProjLiab, Single, 49) \
  X(sngProjOutstShares, Single, 50) \
  X(sngPSO, Single, 51) \
  X(sngRev5YrEst, Single, 52) \
  X(sngRevHist5YrGr, Single, 53) \
  X(sngRevHist5YrGrR2, Single, 54) \
  X(sngRevHistGrowth, Single, 55) \
  X(sngRevProjGrRate, Single, 56) \
  X(sngRevQGrowth, Single, 57) \
  X(sngSellLevelPrice, Single, 58) \
  X(sngSevereLowPrice, Single, 59) \
  X(sngShortTermDebt, Single, 60) \
  X(sngSplitRatio, Single, 61) \
  X(sngSPRating, Single, 62) \
  X(sngTaxRate, Single, 63) \
  X(sngTotalAssets, Single, 64) \
  X(sngTotalCap, Single, 65) \
  X(sngTotalDebt, Single, 66) \
  X(sngTotalReturn, Single, 67) \
  X(sngUpDownRatio, Single, 68) \
  X(sngYearAgoAcctRec, Single, 69) \
  X(sngYearAgoAssets, Single, 70) \
  X(sngYearAgoCash, Single, 71) \
  X(sngYearAgoDebt, Single, 72) \
  X(sngYearAgoInv, Single, 73) \
  X(sngYearAgoLiab, Single, 74) \
  X(sngYearAgoQEPS, Single, 75) \
  X(sngYearAgoQRev, Single, 76) \
  X(strAddress1, Text, 77) \
  X(strAddress2, Text, 78) \
  X(strCity, Text, 79) \
  X(strCode, Text, 80) \
  X(strContactName, Text, 81) \
  X(strCountry, Text, 82) \
  X(DataSourceID, Reference, 83) \
  X(IndustryID, Reference, 85) \
  X(strName, Text, 86) \
  X(strPhoneNumber, Text, 87) \
  X(strPostalCode, Text, 88) \
  X(strProvState, Text, 89) \
  X(SectorID, Reference, 90) \
  X(strSoftwareVersion, Text, 91) \
  X(strSPStockRank, Text, 92) \
  X(strUpdatedPerson, Text, 94) \
  X(strIndustryGroup, Text, 95) \
  X(strURLAddress, Text, 96) \
  X(strVLFinRating, Text, 97) \
  X(strVLPage, Text, 98) \
  X(strVLSafety, Text, 99) \
  X(intLastFY, Integer, 100) \
  X(datLastStudied, Date, 101) \
  X(datLatestQData, Date, 102) \
  X(datLatestMData, Date, 103) \
  X(strVLTimeliness, Text, 107) \
  X(sngCommDiv, Single, 104) \
  X(strSymbol, Text, 93) \
  X(intLatestPMGFY, Integer, 105) \
  X(intPMGGraphDisplay, Integer, 106) \
  X(ExchangeID, Reference, 84)

// Table Options (one row per company, key CompanyID), update order. The insert statement puts
// CompanyID first and swaps blnLockBasicInfo and blnBookVal; blnEPSMinProjLine belongs to the
// SP platform only. Persisted orders: must not change.
#define KWX_OPTIONS_COLUMNS(X) \
  X(strCurSymbol, Text, 1) \
  X(intUnit, Integer, 2) \
  X(intPEMethod, Integer, 3) \
  X(blnTaxRate, Boolean, 4) \
  X(blnRevTrendLine, Boolean, 5) \
  X(blnRevProjLine, Boolean, 6) \
  X(blnRevPlot, Boolean, 7) \
  X(blnPTIPlot, Boolean, 8) \
  X(blnPricePlot, Boolean, 9) \
  X(blnPart3Extra, Boolean, 10) \
  X(blnEPSTrendLine, Boolean, 11) \
  X(blnEPSProjLine, Boolean, 12) \
  X(blnEPSPlot, Boolean, 13) \
  X(blnDebt2Eq, Boolean, 14) \
  X(blnBookVal, Boolean, 16) \
  X(blnLockBasicInfo, Boolean, 15) \
  X(intReportPeriod, Integer, 17) \
  X(sngPMGPEScaleFactor, Single, 18) \
  X(sngPMGPriceZoneScaleFactor, Single, 19) \
  X(sngPMGRVScaleFactor, Single, 20) \
  X(blnEPSMinProjLine, Boolean, 21, PlatformUse::SPOnly)

// The judgment groups, one row per company each (key CompanyID). Update and insert statements
// write the same order. Persisted orders: must not change.
#define KWX_JUDGMENT_GRAPH_COLUMNS(X) \
  X(sngEPSProjLabel1X, Single, 1) \
  X(sngEPSProjLabel1Y, Single, 2) \
  X(sngEPSProjLabel2X, Single, 3) \
  X(sngEPSProjLabel2Y, Single, 4) \
  X(sngRevProjLabel1X, Single, 5) \
  X(sngRevProjLabel1Y, Single, 6) \
  X(sngRevProjLabel2X, Single, 7) \
  X(sngRevProjLabel2Y, Single, 8) \
  X(sngRevTrendX1, Single, 9) \
  X(sngRevTrendY1, Single, 10) \
  X(sngRevTrendX2, Single, 11) \
  X(sngRevTrendY2, Single, 12) \
  X(sngEPSTrendX1, Single, 13) \
  X(sngEPSTrendY1, Single, 14) \
  X(sngEPSTrendX2, Single, 15) \
  X(sngEPSTrendY2, Single, 16) \
  X(sngRevProjY1, Single, 17) \
  X(sngRevProjY2, Single, 18) \
  X(sngEPSProjY1, Single, 19) \
  X(sngEPSProjY2, Single, 20) \
  X(sngFactorPrice52W, Single, 21) \
  X(sngFactorEPS, Single, 22) \
  X(sngFactorPTI, Single, 23) \
  X(sngFactorRev, Single, 24) \
  X(strYearStrike, Flags, 25) \
  X(sngEPSMinProjY1, Single, 26) \
  X(sngEPSMinProjY2, Single, 27)

#define KWX_JUDGMENT_ANALYSIS_COLUMNS(X) \
  X(strTrendROE, Text, 1) \
  X(strTrendPTI, Text, 2) \
  X(strTrendDebt2Eq, Text, 3) \
  X(intLeadPeriod, Integer, 4) \
  X(sngAvgPEHigh, Single, 5) \
  X(sngAvgLowPrice, Single, 6) \
  X(sngAvgPayout, Single, 7) \
  X(sngAvgPELow, Single, 8) \
  X(sngProjAvgLowPrice, Single, 9) \
  X(sngProjPriceLow, Single, 10) \
  X(sngProjAvgPEHigh, Single, 11) \
  X(sngProjAvgPELow, Single, 12) \
  X(sngEstLowEPS, Single, 13) \
  X(sngEPSEstHigh, Single, 14) \
  X(sngEstHighPrice, Single, 15) \
  X(sngRecentLow, Single, 16) \
  X(strPart2Strike, Flags, 17) \
  X(strPart3Strike, Flags, 18) \
  X(sngIndusAvgPTI, Single, 19) \
  X(sngIndusAvgROE, Single, 20) \
  X(sngIndusAvgDebt2Eq, Single, 21) \
  X(sngEPSMinEstHigh, Single, 22) \
  X(sngEstMinHighPrice, Single, 23) \
  X(sngSelHighPrice, Single, 24) \
  X(sngSelLowPrice, Single, 25)

#define KWX_JUDGMENT_CHECK_LIST_COLUMNS(X) \
  X(strSCLReason, Text, 1) \
  X(strSCLCompare, Text, 2) \
  X(strSCLStockSold, Text, 3) \
  X(strSCLUnusualPE, Text, 4) \
  X(intSCLPastCompare, Integer, 5) \
  X(blnSCLPEContinue, Boolean, 6) \
  X(sngSCLPELow, Single, 7) \
  X(sngSCLPEHigh, Single, 8) \
  X(strSCLRevObj, Text, 9) \
  X(strSCLEPSObj, Text, 10) \
  X(strSCLProjEPSObj, Text, 11) \
  X(strSCLStockPrice, Text, 12) \
  X(strSCLGrowthDiscuss, Text, 13) \
  X(strSCLStrike, Flags, 14)

#define KWX_JUDGMENT_PREF_PROC_COLUMNS(X) \
  X(sngPrefProcTaxRate, Single, 1) \
  X(sngPrefProcPTIRev, Single, 2) \
  X(sngPrefProcStartRevenue, Single, 3) \
  X(sngPrefProcStartEPS, Single, 4) \
  X(sngPrefProcRevenueGrowth, Single, 5) \
  X(sngPrefProcPrefDivPaid, Single, 6) \
  X(sngPrefProcNumShares, Single, 7) \
  X(strPrefProcStrikeTaxRate, Flags, 8)

#define KWX_JUDGMENT_ASSESSMENT_COLUMNS(X) \
  X(strSalesIncreasing, Text, 1) \
  X(sngProjSalesGrowth, Single, 2) \
  X(vntContribFactors, Variant, 3) \
  X(strOtherFactors, Text, 4) \
  X(strEPSIncreasing, Text, 5) \
  X(sngProjEPSGrowth, Single, 6) \
  X(strHistSalesEPSGrowth, Text, 7) \
  X(strHistEPSGrowthToSales, Text, 8) \
  X(strSalesEPSObjectives, Text, 9) \
  X(vntStrikePEHigh, Variant, 10) \
  X(vntStrikePELow, Variant, 11) \
  X(sngHistAvgPE, Single, 12) \
  X(strPriceAppreciation, Text, 13) \
  X(strCurPECompareAvgPE, Text, 14) \
  X(strFactorsToContinue, Text, 15)

#define KWX_JUDGMENT_STOCK_REPORT_COLUMNS(X) \
  X(strSSR0a, Text, 1) \
  X(strSSR0GAP, Text, 2) \
  X(strSSR1a, Text, 3) \
  X(strSSR1b, Text, 4) \
  X(strSSR1c, Text, 5) \
  X(strSSR1d, Text, 6) \
  X(strSSR1e, Text, 7) \
  X(strSSR1f, Text, 8) \
  X(strSSR1g, Text, 9) \
  X(strSSR1h, Text, 10) \
  X(strSSR1i, Text, 11) \
  X(strSSR1j, Text, 12) \
  X(strSSR2a, Text, 13) \
  X(strSSR2c, Text, 14) \
  X(strSSR2d, Text, 15) \
  X(strSSR2h, Text, 16) \
  X(strSSR2i, Text, 17) \
  X(strSSR2j, Text, 18) \
  X(strSSR3a, Text, 19) \
  X(strSSR3b, Text, 20) \
  X(strSSR3c, Text, 21) \
  X(strSSR3g, Text, 22) \
  X(strSSR4b, Text, 23) \
  X(strSSR4d, Text, 24) \
  X(strSSR4e, Text, 25) \
  X(strSSR5a, Text, 26) \
  X(strSSR5b, Text, 27) \
  X(strSSR5c, Text, 28) \
  X(strSSR5d, Text, 29) \
  X(strSSR5e, Text, 30) \
  X(strSSR5f, Text, 31) \
  X(strSSR5g, Text, 32) \
  X(strSSR5h, Text, 33) \
  X(strSSR5i, Text, 34) \
  X(strSSR5j, Text, 35) \
  X(strSSR5k, Text, 36) \
  X(strSSR6b, Text, 37) \
  X(strSSR6c, Text, 38) \
  X(strSSR6d, Text, 39) \
  X(strSSR6e, Text, 40) \
  X(strSSR6f, Text, 41) \
  X(strSSR6g, Text, 42) \
  X(strSSR6h, Text, 43) \
  X(strSSR6i, Text, 44) \
  X(strSSR6j, Text, 45) \
  X(strSSR7a, Text, 46) \
  X(strSSR7b, Text, 47) \
  X(strSSR7c, Text, 48) \
  X(strSSR7d, Text, 49) \
  X(sngSSR8b, Single, 50) \
  X(sngSSR8c, Single, 51) \
  X(sngSSR8d, Single, 52) \
  X(strSSR8e, Text, 53) \
  X(strSSR8f, Text, 54) \
  X(datSSR8g, Date, 55) \
  X(sngSSR8h, Single, 56)

// Struck-out item lists that a study's data files carry but no table keeps. They are members of
// their group like the columns, reachable by name and compared with the study, but they are in
// no TableDef, no schema and no statement: a study saved to the database and loaded again
// comes back without them. Same X(name, ColumnType, insert position) shape as the column
// lists; the insert position is 0 as no statement writes them. Each list holds five items.
//
// The analysis group's five lists besides strPart2Strike and strPart3Strike, in the order the
// KWX layout carries them (positions 227 to 231) and the SSG judgment values name them.
#define KWX_JUDGMENT_ANALYSIS_UNSTORED(X) \
  X(vntStrikeD2Eq, Flags, 0) \
  X(vntStrikePTI, Flags, 0) \
  X(vntStrikeROE, Flags, 0) \
  X(vntStrikeLowPrice, Flags, 0) \
  X(vntStrikePayout, Flags, 0)
// The check list's struck-out items of its revenue objective and of its EPS objective (KWX
// positions 168 and 169, just before the texts of those objectives at 170 and 171).
#define KWX_JUDGMENT_CHECK_LIST_UNSTORED(X) \
  X(vntSCLRevStrike, Flags, 0) \
  X(vntSCLEPSStrike, Flags, 0)
// The groups whose every property is a column.
#define KWX_NO_UNSTORED(X)

// Notes: one free text per company (key CompanyID).
#define KWX_NOTES_COLUMNS(X) \
  X(Notes, Text, 1)

// The series, many rows per company: own autonumbered key, a CompanyID column, then these value
// columns. Persisted orders: must not change.
#define KWX_YEARLY_COLUMNS(X) \
  X(Year, Integer, 1) \
  X(HighPrice, Single, 2) \
  X(LowPrice, Single, 3) \
  X(Sales, Single, 4) \
  X(TaxRate, Single, 5) \
  X(PretaxIncome, Single, 6) \
  X(NetIncome, Single, 7) \
  X(BookValue, Single, 8) \
  X(EPS, Single, 9) \
  X(DPS, Single, 10) \
  X(LongTermDebt, Single, 11) \
  X(CSO, Single, 12) \
  X(CashFlow, Single, 13) \
  X(CommonEquity, Single, 14)

#define KWX_QUARTERLY_COLUMNS(X) \
  X(Quarter, Integer, 1) \
  X(Year, Integer, 2) \
  X(EPS, Single, 3) \
  X(Sales, Single, 4) \
  X(PretaxIncome, Single, 5) \
  X(NetIncome, Single, 6) \
  X(DPS, Single, 7) \
  X(CSO, Single, 8) \
  X(TaxRate, Single, 9) \
  X(Depreciation, Single, 10) \
  X(ExDividend, Single, 11)

#define KWX_MONTHLY_COLUMNS(X) \
  X(Month, Integer, 1) \
  X(ClosingPrice, Single, 2)

#define KWX_JUDGMENT_PMG_COLUMNS(X) \
  X(Year, Integer, 1) \
  X(HiPE, Single, 2) \
  X(LowPE, Single, 3) \
  X(BuyBelow, Single, 4) \
  X(SellAbove, Single, 5)

#define KWX_JUDGMENT_PERT_COLUMNS(X) \
  X(GraphType, Long, 1) \
  X(ScaleFactorNegative, Single, 2) \
  X(ScaleFactorPositive, Single, 3)

// The reference tables: an autonumbered key (SectorID, ...) and the name.
#define KWX_SECTOR_COLUMNS(X) \
  X(Sector, Text, 1)

#define KWX_EXCHANGE_COLUMNS(X) \
  X(Exchange, Text, 1)

#define KWX_DATA_SOURCE_COLUMNS(X) \
  X(DataSource, Text, 1)

// IndustryCode is held as a 32-bit integer, as the reference-table code reads and writes it.
#define KWX_INDUSTRY_COLUMNS(X) \
  X(IndustryCode, Long, 1) \
  X(Industry, Text, 2)

// Comparisons (key ComparisonID). The insert statement writes StudiedSection before LastUpdate,
// the update statement the other way round. Persisted orders: must not change.
#define KWX_COMPARISON_COLUMNS(X) \
  X(Name, Text, 1) \
  X(Description, Text, 2) \
  X(Field27, Text, 3) \
  X(Field28, Text, 4) \
  X(UpdatePerson, Text, 5) \
  X(LastUpdate, Date, 7) \
  X(StudiedSection, Integer, 6)

// The members of a comparison (key ComparisonCompanyID, which gives the member order).
// SelectedFields is a text of 1/0 digits, FieldData the member's texts joined with ",".
#define KWX_COMPARISON_COMPANY_COLUMNS(X) \
  X(ComparisonID, Long, 1) \
  X(CompanyID, Long, 2) \
  X(SelectedFields, Text, 3) \
  X(FieldData, Text, 4)

// PERT reports (key PERTReportID).
#define KWX_PERT_REPORT_COLUMNS(X) \
  X(Name, Text, 1) \
  X(Description, Text, 2) \
  X(LastUpdate, Date, 3)

// The members of a PERT report (key PERTReportCompanyID, which gives the member order).
#define KWX_PERT_REPORT_COMPANY_COLUMNS(X) \
  X(PERTReportID, Long, 1) \
  X(CompanyID, Long, 2)

// The market averages of one day; the table has no key, a row is found by its day.
#define KWX_DJ_AVERAGES_COLUMNS(X) \
  X(DJDate, Date, 1) \
  X(sngUtilities, Single, 2) \
  X(sngTransportation, Single, 3) \
  X(sngIndustrials, Single, 4)

// clang-format on

#endif  // KWX_MODEL_COLUMN_LISTS_H_

// Writes the sample studies: five invented companies, each as a KWX and an SSG data file,
// built in code and written through the export builders and the data-file object, the way
// the loader writes them. Usage: kwx-make-samples [output folder] (default "studies").
//
// The histories are generated from a few figures per company (growth, margin, cycle, price
// multiples) with a fixed-seed generator, so every run writes the same files.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "automation/dates.h"
#include "export/kwx_export.h"
#include "export/ssg_export.h"
#include "model/company.h"
#include "model/fiscal_dates.h"
#include "services/data_file.h"

namespace {

using kwx::Company;
using kwx::DateSerial;

// What sets one company apart.
struct Profile {
  const char* name;
  const char* symbol;
  const char* exchange;
  const char* sector;
  const char* industry;
  const char* data_source;
  const char* address;
  const char* city;
  const char* province;
  const char* country;
  const char* phone;
  const char* url;
  int year_end_month;     // fiscal years end on the last day of this month
  double sales;           // latest year's sales, millions
  double growth;          // yearly sales growth, fraction
  double cycle;           // amplitude of the business cycle on margins, fraction of margin
  double margin;          // pre-tax margin, fraction
  double tax_rate;        // percent
  double shares;          // latest common shares outstanding, millions
  double payout;          // dividend payout, fraction of EPS
  double pe_high;         // typical high and low P/E
  double pe_low;
  double book_per_share;  // latest book value per share
  double debt;            // long-term debt, millions
  const char* notes;
  const char* reason;     // the stock-report answer on why the company was studied
};

constexpr Profile kProfiles[] = {
    {"Larchmont Rail Systems", "LRS", "TSX", "Industrials", "Railroad Equipment", "Value Line",
     "400 Quay Street", "Toronto", "ON", "Canada", "416-555-0142", "www.larchmontrail.example",
     6, 2410, 0.07, 0.10, 0.14, 26.5, 118.4, 0.35, 21, 13, 18.5, 820,
     "Builds freight cars and signalling equipment.\r\nBacklog covers two years of sales.\r\n"
     "Watch steel prices.",
     "Steady grower with a long backlog"},
    {"Brightwater Pharmaceuticals", "BWP", "NASDAQ", "Health Care", "Drug Manufacturers",
     "S & P", "77 Meridian Parkway", "Cambridge", "MA", "USA", "617-555-0199",
     "www.brightwaterpharma.example", 12, 1865, 0.16, 0.05, 0.24, 19.0, 64.2, 0.0, 38, 22,
     14.2, 310,
     "Two late-stage trials read out next year.\r\nNo dividend: cash goes to research.",
     "Fast growth from a new drug class"},
    {"Copperline Mining", "CPLM", "NYSE", "Basic Materials", "Copper", "Value Line",
     "1200 Ridge Road", "Phoenix", "AZ", "USA", "602-555-0107", "www.copperline.example", 12,
     5230, 0.03, 0.60, 0.18, 31.0, 402.5, 0.30, 16, 7, 22.75, 3100,
     "Cyclical: earnings follow the copper price.\r\nBuy near the bottom of the cycle only.",
     "Cyclical miner near a low in the cycle"},
    {"Harborview Grocers", "HVG", "NYSE", "Consumer Staples", "Grocery Stores", "Manual",
     "55 Wharf Lane", "Baltimore", "MD", "USA", "410-555-0163", "www.harborview.example", 1,
     9870, 0.045, 0.04, 0.045, 24.0, 210.0, 0.45, 19, 12, 11.4, 1450,
     "Regional chain, 410 stores.\r\nMargins thin but stable.\r\nDividend raised 20 years "
     "running.",
     "Defensive holding with a rising dividend"},
    {"Quillfeather Software", "QFS", "NASDAQ", "Technology", "Application Software", "S & P",
     "9 Lantern Court", "Austin", "TX", "USA", "512-555-0188", "www.quillfeather.example", 9,
     1320, 0.21, 0.03, 0.27, 21.0, 88.6, 0.10, 45, 27, 9.85, 120,
     "Subscription revenue is 85% of sales.\r\nHigh multiple: size the position small.",
     "High quality, high growth, priced for it"},
};

// A fixed-seed generator, so the files are the same on every run.
class Noise {
 public:
  explicit Noise(uint32_t seed) : state_(seed) {}
  // A value in [-1, 1).
  double Next() {
    state_ = state_ * 1664525u + 1013904223u;
    return (state_ >> 8) / double(1u << 23) - 1.0;
  }

 private:
  uint32_t state_;
};

// Figures as a data service prints them: two decimals.
float Cents(double v) { return static_cast<float>(std::round(v * 100) / 100); }

Company BuildStudy(const Profile& p, uint32_t seed) {
  Noise noise(seed);
  Company c;
  c.strName = p.name;
  c.strSymbol = p.symbol;
  c.ExchangeID = p.exchange;
  c.SectorID = p.sector;
  c.IndustryID = p.industry;
  c.strIndustryGroup = p.industry;
  c.DataSourceID = p.data_source;
  c.strAddress1 = p.address;
  c.strCity = p.city;
  c.strProvState = p.province;
  c.strCountry = p.country;
  c.strPhoneNumber = p.phone;
  c.strURLAddress = p.url;
  c.strContactName = "Investor Relations";
  c.strUpdatedPerson = "Sample Club";
  c.strSoftwareVersion = "1.01";
  c.Notes = p.notes;

  // The data reaches the end of January 2025: the latest fiscal year is the last one ended
  // by then (numbered by the year it ends in), the latest quarter the last quarter ended.
  const kwx::Date data_end = DateSerial(2025, 1, 31);
  const int last_fy = p.year_end_month == 1 ? 2025 : 2024;
  c.intLastFY = static_cast<int16_t>(last_fy);
  c.datLastFY = DateSerial(last_fy, p.year_end_month + 1, 0);
  c.datLatestQEnding = c.datLastFY;
  for (int months = 3; DateSerial(last_fy, p.year_end_month + months + 1, 0).serial <= data_end.serial;
       months += 3) {
    c.datLatestQEnding = DateSerial(last_fy, p.year_end_month + months + 1, 0);
  }
  c.datDataCreated = DateSerial(2025, 2, 14);
  c.datDataUpdated = DateSerial(2025, 3, 7);
  c.datLastStudied = DateSerial(2025, 3, 8);
  c.datLatestQData = c.datLatestQEnding;
  c.datLatestMData = DateSerial(2025, 2, 28);
  c.intNumDataYears = 10;
  c.intLatestPMGFY = static_cast<int16_t>(last_fy + 1);

  // Ten years, latest first.
  double sales = p.sales;
  double shares = p.shares;
  double book = p.book_per_share;
  for (int i = 0; i < 10; ++i) {
    kwx::YearlyRow& y = c.Yearly[i];
    const double cycle = 1 + p.cycle * std::sin(i * 1.3 + seed);
    const double margin = p.margin * cycle * (1 + 0.05 * noise.Next());
    const double pretax = sales * margin;
    const double net = pretax * (1 - p.tax_rate / 100);
    const double eps = net / shares;
    y.Year = static_cast<int16_t>(last_fy - i);
    y.Sales = Cents(sales);
    y.PretaxIncome = Cents(pretax);
    y.TaxRate = Cents(p.tax_rate + noise.Next());
    y.NetIncome = Cents(net);
    y.CSO = Cents(shares);
    y.EPS = Cents(eps);
    y.DPS = Cents(eps * p.payout);
    y.BookValue = Cents(book);
    y.HighPrice = Cents(std::max(eps, 0.1) * p.pe_high * (1 + 0.1 * noise.Next()));
    y.LowPrice = Cents(std::max(eps, 0.1) * p.pe_low * (1 + 0.1 * noise.Next()));
    y.LongTermDebt = Cents(p.debt * (1 - 0.04 * i));
    y.CashFlow = Cents(eps * 1.4);
    y.CommonEquity = Cents(book * shares);
    sales /= 1 + p.growth * (1 + 0.2 * noise.Next());
    shares *= 1 + 0.01 * noise.Next();
    book /= 1 + p.growth * 0.6;
  }
  const kwx::YearlyRow& latest = c.Yearly[0];

  // Thirty-six quarters, latest first, a quarter of the year's figures with some seasonality.
  for (int i = 0; i < 36; ++i) {
    kwx::QuarterlyRow& q = c.Quarterly[i];
    const kwx::YearlyRow& y = c.Yearly[std::min(i / 4, 9)];
    const double season = 1 + 0.06 * std::cos(i * 1.57);
    const kwx::FiscalQuarter fq = kwx::QuarterOfElement(i, c.datLatestQEnding, c.datLastFY);
    q.Quarter = fq.quarter;
    q.Year = fq.year;
    q.Sales = Cents(y.Sales / 4 * season);
    q.PretaxIncome = Cents(y.PretaxIncome / 4 * season);
    q.NetIncome = Cents(y.NetIncome / 4 * season);
    q.EPS = Cents(y.EPS / 4 * season);
    q.DPS = Cents(y.DPS / 4);
    q.CSO = y.CSO;
    q.TaxRate = y.TaxRate;
    q.Depreciation = Cents(y.Sales * 0.012);
    q.ExDividend = q.DPS;
  }

  // Seventy-two monthly closes, latest first, a walk between the yearly highs and lows.
  double price = (latest.HighPrice + latest.LowPrice) / 2;
  for (int i = 0; i < 72; ++i) {
    const kwx::YearlyRow& y = c.Yearly[std::min(i / 12, 9)];
    price = std::clamp(price * (1 + 0.06 * noise.Next()), double{y.LowPrice}, double{y.HighPrice});
    c.Monthly[i].Month = static_cast<int16_t>(kwx::Month(kwx::DateAdd("m", -i, c.datLatestMData)));
    c.Monthly[i].ClosingPrice = Cents(price);
  }

  c.sngCurPrice = c.Monthly[0].ClosingPrice;
  c.sngHighPrice52W = latest.HighPrice;
  c.sngLowPrice52W = latest.LowPrice;
  c.sngCSO = latest.CSO;
  c.sngACS = Cents(latest.CSO * 1.02);
  c.sngPotDilution = Cents((c.sngACS / c.sngCSO - 1) * 100);
  c.sngCurDiv = c.sngCommDiv = latest.DPS;
  c.sngCurPE = Cents(c.sngCurPrice / std::max(double{latest.EPS}, 0.01));
  c.sngCurYield = Cents(latest.DPS / c.sngCurPrice * 100);
  c.sngAverageYield = Cents(c.sngCurYield * 0.9);
  c.sngHighYield = Cents(c.sngCurYield * 1.4);
  c.sngTaxRate = Cents(p.tax_rate);
  c.sngEPSHistGrowth = Cents(p.growth * 100 * 1.05);
  c.sngRevHistGrowth = Cents(p.growth * 100);
  c.sngEPSProjGrRate = Cents(p.growth * 100 * 0.9);
  c.sngRevProjGrRate = Cents(p.growth * 100 * 0.85);
  c.sngEPSHist5YrGr = c.sngEPSHistGrowth;
  c.sngRevHist5YrGr = c.sngRevHistGrowth;
  c.sngEPSHist5YrGrR2 = Cents(0.95 - p.cycle * 0.5);
  c.sngRevHist5YrGrR2 = Cents(0.97 - p.cycle * 0.3);
  c.sngPEAverage = Cents((p.pe_high + p.pe_low) / 2);
  c.sngAvg5YrPTI = Cents(p.margin * 100);
  c.sngAvg5YrROE = Cents(latest.EPS / latest.BookValue * 100);
  c.sngBeta = Cents(0.6 + p.cycle + p.growth * 2);
  c.sngTotalDebt = latest.LongTermDebt;
  c.sngLatestQRev = c.Quarterly[0].Sales;
  c.sngYearAgoQRev = c.Quarterly[4].Sales;
  c.sngLatestQEPS = c.Quarterly[0].EPS;
  c.sngYearAgoQEPS = c.Quarterly[4].EPS;
  c.sngEPSNextYearEst = Cents(latest.EPS * (1 + p.growth));
  c.sngInsideOwnership = Cents(3 + 4 * (noise.Next() + 1));
  c.sngInstHoldings = Cents(55 + 20 * noise.Next());

  kwx::OptionsGroup& o = c.Options;
  o.strCurSymbol = "$";
  o.intUnit = 1;
  o.blnTaxRate = true;
  o.blnRevTrendLine = o.blnEPSTrendLine = o.blnRevProjLine = o.blnEPSProjLine = true;
  o.blnRevPlot = o.blnEPSPlot = o.blnPricePlot = o.blnPTIPlot = true;
  o.blnBookVal = true;
  o.sngPMGPEScaleFactor = o.sngPMGPriceZoneScaleFactor = o.sngPMGRVScaleFactor = 1;

  kwx::JudgmentGraphGroup& g = c.JudgmentGraph;
  g.sngRevTrendX1 = g.sngEPSTrendX1 = static_cast<float>(last_fy - 9);
  g.sngRevTrendX2 = g.sngEPSTrendX2 = static_cast<float>(last_fy);
  g.sngRevTrendY1 = c.Yearly[9].Sales;
  g.sngRevTrendY2 = latest.Sales;
  g.sngEPSTrendY1 = c.Yearly[9].EPS;
  g.sngEPSTrendY2 = latest.EPS;
  g.sngRevProjY1 = latest.Sales;
  g.sngRevProjY2 = Cents(latest.Sales * std::pow(1 + c.sngRevProjGrRate / 100, 5));
  g.sngEPSProjY1 = latest.EPS;
  g.sngEPSProjY2 = Cents(latest.EPS * std::pow(1 + c.sngEPSProjGrRate / 100, 5));
  g.sngFactorPrice52W = g.sngFactorEPS = g.sngFactorPTI = g.sngFactorRev = 1;
  g.SetProperty("strYearStrike", kwx::Variant(p.cycle > 0.3 ? "0000000010" : "0000000000"));

  kwx::JudgmentAnalysisGroup& a = c.JudgmentAnalysis;
  a.strTrendROE = p.cycle > 0.3 ? "Even" : "Up";
  a.strTrendPTI = "Up";
  a.strTrendDebt2Eq = "Down";
  a.intLeadPeriod = 5;
  a.sngAvgPEHigh = Cents(p.pe_high);
  a.sngAvgPELow = Cents(p.pe_low);
  a.sngAvgPayout = Cents(p.payout * 100);
  a.sngAvgLowPrice = Cents(latest.LowPrice * 0.9);
  a.sngProjAvgPEHigh = Cents(p.pe_high * 0.9);
  a.sngProjAvgPELow = Cents(p.pe_low * 0.9);
  a.sngEPSEstHigh = g.sngEPSProjY2;
  a.sngEstHighPrice = Cents(a.sngEPSEstHigh * a.sngProjAvgPEHigh);
  a.sngEstLowEPS = Cents(latest.EPS * 0.85);
  a.sngProjPriceLow = Cents(a.sngEstLowEPS * a.sngProjAvgPELow);
  a.sngRecentLow = latest.LowPrice;
  a.sngSelHighPrice = a.sngEstHighPrice;
  a.sngSelLowPrice = a.sngProjPriceLow;
  c.sngEstLowPrice = a.sngProjPriceLow;
  c.sngEstAvgPrice = Cents((a.sngEstHighPrice + a.sngProjPriceLow) / 2);
  c.sngSellLevelPrice = Cents(a.sngEstHighPrice * 0.9);
  c.sngUpDownRatio = Cents((a.sngEstHighPrice - c.sngCurPrice) /
                           std::max(double{c.sngCurPrice - a.sngProjPriceLow}, 0.5));
  c.sngTotalReturn = Cents(c.sngCurYield + c.sngEPSProjGrRate);
  c.sngProjDivPayout = a.sngAvgPayout;

  for (int i = 0; i < 5; ++i) {
    kwx::JudgmentPMGRow& pmg = c.JudgmentPMG[i];
    const double eps = latest.EPS * std::pow(1 + c.sngEPSProjGrRate / 100, i + 1);
    pmg.Year = static_cast<int16_t>(last_fy + 1 + i);
    pmg.HiPE = a.sngProjAvgPEHigh;
    pmg.LowPE = a.sngProjAvgPELow;
    pmg.BuyBelow = Cents(eps * (p.pe_low + (p.pe_high - p.pe_low) / 3));
    pmg.SellAbove = Cents(eps * (p.pe_high - (p.pe_high - p.pe_low) / 3));
  }
  c.JudgmentPERT.push_back({1, 0.8f, 1.25f});
  if (p.cycle > 0.3) c.JudgmentPERT.push_back({2, 0.5f, 1.5f});

  kwx::JudgmentStockReportGroup& r = c.JudgmentStockReport;
  r.strSSR0a = p.reason;
  r.strSSR1a = "Sales growth of " + std::to_string(static_cast<int>(p.growth * 100)) +
               "% a year over ten years";
  r.strSSR5a = p.cycle > 0.3 ? "Hold" : "Buy below the buy zone's upper limit";
  kwx::JudgmentCheckListGroup& scl = c.JudgmentCheckList;
  scl.strSCLReason = p.reason;
  scl.intSCLPastCompare = 5;
  scl.sngSCLPEHigh = a.sngProjAvgPEHigh;
  scl.sngSCLPELow = a.sngProjAvgPELow;

  c.DJAverages.DJDate = c.datDataUpdated;
  return c;
}

bool Write(kwx::DataFile& file, const std::filesystem::path& path, kwx::Variant fields) {
  std::string name = path.string();
  if (file.blnExport(name, fields)) return true;
  std::fprintf(stderr, "kwx-make-samples: cannot write %s\n", name.c_str());
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  const std::filesystem::path folder = argc > 1 ? argv[1] : "studies";
  std::error_code ec;
  std::filesystem::create_directories(folder, ec);
  kwx::DataFile file;
  bool ok = true;
  uint32_t seed = 7;
  for (const Profile& profile : kProfiles) {
    const Company study = BuildStudy(profile, seed++);
    ok &= Write(file, folder / (std::string(profile.symbol) + ".kwx"), kwx::BuildKwxFields(study));
    ok &= Write(file, folder / (std::string(profile.symbol) + ".ssg"), kwx::BuildSsgFields(study));
  }
  return ok ? 0 : 1;
}

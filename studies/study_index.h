// The saved studies by symbol and exchange, so that an import finds the study a file refreshes
// and a host finds a study by the names a person gives.
#ifndef KWX_STUDIES_STUDY_INDEX_H_
#define KWX_STUDIES_STUDY_INDEX_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "loader/kwx_loader.h"

namespace kwx {

// The columns a list of the saved studies shows, as kStudyListSql reports them, and the query,
// ordered by symbol and then CompanyID.
inline constexpr const char* kStudyListColumns[] = {"CompanyID", "strSymbol",   "Exchange",
                                                    "strName",   "sngCurPrice", "datDataUpdated"};
inline constexpr const char* kStudyListSql =
    "select C.CompanyID, C.strSymbol, E.Exchange, C.strName, C.sngCurPrice, C.datDataUpdated "
    "from Company AS C LEFT JOIN Exchange AS E ON C.ExchangeID = E.ExchangeID "
    "order by C.strSymbol, C.CompanyID";

// Read once, for a caller that looks up many (an import) as well as for one lookup. A symbol
// and an exchange name compare without regard to case and to blanks around them; an apostrophe
// in a symbol matches the character the store keeps in its place; an empty exchange name
// matches studies saved with no exchange.
class StudyIndex {
 public:
  // Reads the symbol and exchange of every saved study through `loader`, which must outlive the
  // index and have a database open. Raises std::runtime_error when the studies cannot be read.
  explicit StudyIndex(kwxLoader& loader);

  // The CompanyIDs saved with `symbol` on the exchange named `exchange`, smallest first.
  std::vector<int32_t> Find(std::string_view symbol, std::string_view exchange) const;
  // Records a study saved after the index was read.
  void Add(int32_t id, std::string_view symbol, std::string_view exchange);
  // Reads the studies other programs saved since the index was read (a CompanyID above every
  // one it holds). Called with the database's write lock held (inside a write transaction), the
  // index then holds every saved study until the lock is let go. Raises std::runtime_error as
  // the constructor does.
  void Refresh();

 private:
  struct Key {
    int32_t exchange_id;
    std::string symbol;  // trimmed, as the store holds it
  };
  struct KeyHash {
    size_t operator()(const Key& key) const noexcept;
  };
  struct KeyEqual {
    bool operator()(const Key& a, const Key& b) const noexcept;
  };
  std::vector<int32_t> ExchangeIds(std::string_view name) const;
  // Adds the studies `sql` reads (CompanyID, strSymbol, ExchangeID).
  void Read(const std::string& sql);

  kwxLoader& loader_;
  std::unordered_map<Key, std::vector<int32_t>, KeyHash, KeyEqual> studies_;
  int32_t highest_ = 0;  // the highest CompanyID held
};

}  // namespace kwx

#endif  // KWX_STUDIES_STUDY_INDEX_H_

#include "automation/services.h"

#include <atomic>

#include "automation/conversions.h"

namespace kwx {

StatementTemplate::StatementTemplate() {
  static std::atomic<uint64_t> next{1};
  id = next.fetch_add(1, std::memory_order_relaxed);
}

void ComposedStatement::SetSingle(size_t i, float v) {
  if (singles.size() != literals.size()) singles.resize(literals.size());
  singles[i] = v;
  literals[i].clear();
}

std::string ComposedStatement::Literal(size_t i) const {
  if (i < singles.size() && singles[i]) return NumberText(*singles[i]);
  return literals[i];
}

std::string ComposedStatement::Text() const {
  std::string text;
  if (shape == nullptr) return text;
  for (size_t i = 0; i < shape->pieces.size(); ++i) {
    text.append(shape->pieces[i]);
    if (i < literals.size()) text.append(Literal(i));
  }
  return text;
}

}  // namespace kwx

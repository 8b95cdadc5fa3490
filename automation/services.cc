#include "automation/services.h"

#include <atomic>

namespace kwx {

StatementTemplate::StatementTemplate() {
  static std::atomic<uint64_t> next{1};
  id = next.fetch_add(1, std::memory_order_relaxed);
}

std::string ComposedStatement::Text() const {
  std::string text;
  if (shape == nullptr) return text;
  size_t size = 0;
  for (const std::string& piece : shape->pieces) size += piece.size();
  for (const std::string& literal : literals) size += literal.size();
  text.reserve(size);
  for (size_t i = 0; i < shape->pieces.size(); ++i) {
    text.append(shape->pieces[i]);
    if (i < literals.size()) text.append(literals[i]);
  }
  return text;
}

}  // namespace kwx

#include "automation/registry.h"

#include <utility>

#include "automation/text.h"

namespace kwx {

ObjectRegistry& ObjectRegistry::Instance() {
  static ObjectRegistry registry;
  return registry;
}

void ObjectRegistry::Register(std::string_view prog_id, ObjectFactory factory) {
  std::lock_guard lock(mu_);
  factories_[FoldCase(prog_id)] = std::move(factory);
}

bool ObjectRegistry::RegisterIfAbsent(std::string_view prog_id, ObjectFactory factory) {
  std::lock_guard lock(mu_);
  return factories_.try_emplace(FoldCase(prog_id), std::move(factory)).second;
}

void ObjectRegistry::Unregister(std::string_view prog_id) {
  std::lock_guard lock(mu_);
  factories_.erase(FoldCase(prog_id));
}

bool ObjectRegistry::IsRegistered(std::string_view prog_id) const {
  std::lock_guard lock(mu_);
  return factories_.count(FoldCase(prog_id)) != 0;
}

ObjectRef ObjectRegistry::Create(std::string_view prog_id) const noexcept {
  ObjectFactory factory;
  {
    std::lock_guard lock(mu_);
    auto it = factories_.find(FoldCase(prog_id));
    if (it == factories_.end() || !it->second) return nullptr;
    factory = it->second;  // call outside the lock: a factory may create objects itself
  }
  try {
    return factory();
  } catch (...) {
    return nullptr;
  }
}

ScopedRegistration::ScopedRegistration(std::string_view prog_id, ObjectFactory factory)
    : prog_id_(prog_id) {
  auto& registry = ObjectRegistry::Instance();
  std::lock_guard lock(registry.mu_);
  auto key = FoldCase(prog_id);
  auto it = registry.factories_.find(key);
  had_previous_ = it != registry.factories_.end();
  if (had_previous_) previous_ = it->second;
  registry.factories_[key] = std::move(factory);
}

ScopedRegistration::~ScopedRegistration() {
  auto& registry = ObjectRegistry::Instance();
  if (had_previous_) {
    registry.Register(prog_id_, std::move(previous_));
  } else {
    registry.Unregister(prog_id_);
  }
}

}  // namespace kwx

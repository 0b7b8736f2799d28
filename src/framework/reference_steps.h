// The recorded steps that changes of references are made of, each of one end. What may not be
// is checked by those who take them.
#pragma once

#include <cstdint>

#include "framework/element.h"
#include "framework/links.h"
#include "framework/model_impl.h"
#include "framework/raw.h"

namespace mf::zero::references {

inline ReferenceList& listOf(const ElementImpl& owner, const PropertyInfo& property) {
  return Raw::at<ReferenceList>(owner, property);
}
/// What a single reference holds; null for nothing.
inline ElementImpl* singleOf(const ElementImpl& owner, const PropertyInfo& property) {
  const ElementId id = Raw::at<ReferenceSlot>(owner, property).target;
  return id == kNoElement ? nullptr : Chunk::find(owner, id);
}
inline ElementImpl& targetAt(const ElementImpl& owner, const PropertyInfo& property,
                             std::uint32_t position) {
  return *Chunk::find(owner, links::slotAt(owner, property, position).target);
}

/// Whether a change of one list or slot and nothing else is all there is to it.
inline bool isSimple(const PropertyInfo& property) {
  return !property.has(kContainment) && !property.opposite;
}
/// Whether a reference of an element made by the newest record needs no record of its own.
bool coveredByCreation(const ModelImpl& model, const ElementImpl& owner,
                       const PropertyInfo& property);

void putSingle(ElementImpl& owner, const PropertyInfo& property, ElementImpl* target);
void putInList(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position,
               ElementImpl& target);
void takeFromList(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position);
/// Either of them, by the property.
void take(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position);
/// Both ends. A proxy has none of its own to take; nor does the old one come back when it is
/// loaded.
void unlink(ElementImpl& owner, const PropertyInfo& property, std::uint32_t position);
/// Makes the opposite end of a new reference; frees it first where it holds just one.
void linkOpposite(ElementImpl& owner, const PropertyInfo& property, ElementImpl& target);

/// Whether nothing speaks against a plain reference but that it may be held already.
inline bool isWelcome(const ModelImpl& model, const PropertyInfo& property,
                      const ElementImpl* target) {
  if (!target || !Raw::isPlain(*target)) return false;
  const Chunk& chunk = *Chunk::of(target);
  return chunk.model == &model && chunk.info->isA(*property.target);
}
/// `check`, and loads a proxy that must not be held as one or whose own end changes too.
void admit(const ElementImpl& owner, const PropertyInfo& property, const ElementImpl* target);
/// Closes the gaps of a list that is half of gaps, if the model is idle.
void tidy(ElementImpl& owner, const PropertyInfo& property);

}  // namespace mf::zero::references

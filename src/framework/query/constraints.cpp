#include "framework/query/constraints.h"

#include "framework/meta/meta.h"
#include "framework/query/query.h"

namespace mf::zero {

Constrainables::Constrainables(query::AbstractQuery& query, const meta::Class& metaClass,
                               query::SearchClassMatchMode mode)
    : query_(&query) {
  const ClassInfo* info = metaClass->info();
  if (!info) reportException(mf0::messages::NoSuchType(metaClass->getQualifiedName()));
  query.restrictTo(*info, mode);
}

namespace query {

Constraint::Constraint(Constrainables& constrainables, const PropertyInfo& property)
    : query_(constrainables.query_), property_(&property) {}

void Constraint::add(Comparison comparison, const Value& operand) {
  query_->where(*property_, comparison, operand);
}

}  // namespace query
}  // namespace mf::zero

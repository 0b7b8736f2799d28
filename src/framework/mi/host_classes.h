// The framework's own classes as scripts see them: "mf.zero.Model", "mf.zero.ModelElement", live
// collections, transactions, subscriptions and the meta classes.
#pragma once

#include <memory>

#include "framework/export.h"
#include "framework/mi/empty_parent_package.h"
#include "host/vcos/table.h"

namespace mf::zero::mi {

/// Attaches the framework to the host (host_boundary.h) and adds the packages "mf", "mf.zero" and
/// "mf.zero.meta" with their classes; what is known already stays. Raises what the host raises,
/// after which it may be called again. On the host's thread.
MF0_API void registerHostClasses();

namespace detail {

// The tables, one beside the methods of each class.

extern const vcos::factory::ClassTable kModelTable;
extern const vcos::factory::ClassTable kTransactionTable;
extern const vcos::factory::ClassTable kSubscriptionTable;
extern const vcos::factory::ClassTable kElementTable;
extern const vcos::factory::ClassTable kSetTable;
extern const vcos::factory::ClassTable kSequenceTable;
extern const vcos::factory::ClassTable kPrimitiveSetTable;
extern const vcos::factory::ClassTable kPrimitiveSequenceTable;

/// The package "mf.zero.meta".
std::unique_ptr<EmptyParentPackage> makeMetaPackage();

}  // namespace detail
}  // namespace mf::zero::mi

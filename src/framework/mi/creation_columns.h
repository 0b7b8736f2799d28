// Many elements of one class at once, out of a column of values for each property.
#pragma once

#include <vector>

#include "framework/element.h"
#include "framework/model.h"
#include "host/array.h"

namespace mf::zero::mi {

/// Elements of the class, in order, or none of them: `columns` is a 1-by-1 struct, of which each
/// field names a property and holds its values, one for each element. A cell array holds whatever
/// a struct of first values may (creation_arguments.h), any other array its own elements. No
/// fields are no elements. Observers are told of all at once.
///
/// Raises UnequalColumns, and what creating one by one raises, followed by ForElement.
std::vector<ModelElement> createFromColumns(const vxArray* columns, const Model& model,
                                            const ClassInfo& info);

}  // namespace mf::zero::mi

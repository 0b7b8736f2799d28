// The visible state of a model as plain text, to compare one moment with another
// without holding on to anything in it.
#pragma once

#include <map>
#include <string>

#include "framework/model.h"
#include "framework/value.h"

namespace mf::zero {
class ChangeSet;
class ElementImpl;
}  // namespace mf::zero

namespace mf::zero::testing {

/// Class and values (by property name) of one element; of a proxy, the class alone.
using ElementPicture = std::map<std::string, std::string>;
/// All elements, by identity.
using Picture = std::map<std::string, ElementPicture>;

std::string pictureOf(const Value& value);
ElementPicture pictureOf(const ElementImpl& element);
Picture pictureOf(const Model& model);

/// Does to a picture what a change set says has happened; answers what did not fit, a line each.
std::string apply(const ChangeSet& changes, Picture& picture);

/// Where the second picture differs from the first, a line each; empty for equal ones.
std::string differences(const Picture& expected, const Picture& actual);

}  // namespace mf::zero::testing

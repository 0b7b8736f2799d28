#include "support/picture.h"

#include "framework/change_set.h"
#include "framework/model_impl.h"
#include "framework/raw.h"
#include "host/array.h"

namespace mf::zero::testing {

namespace {

std::string number(double value) { return value == 0 ? "0" : std::to_string(value); }

std::string arrayText(const vxArray* array) {
  if (!array) return "no array";
  std::string text = "[";
  for (const double value : vexal::doubleData(array)) text += number(value) + ' ';
  return text + ']';
}

std::string keyOf(const PropertyInfo& property) { return toUtf8(property.name); }

}  // namespace

std::string pictureOf(const Value& value) {
  if (value.isList()) {
    std::string text = "(";
    for (const Value& item : value.items()) text += pictureOf(item) + ", ";
    return text + ')';
  }
  if (value.isEmpty()) return "nothing";
  switch (value.meta().kind()) {
    case ValueKind::kReal: return number(value.getValue<double>());
    case ValueKind::kString: return '"' + toUtf8(value.getValue<std::u16string>()) + '"';
    case ValueKind::kArray: return arrayText(value.getValue<const vxArray*>());
    case ValueKind::kElement: return value.getValue<ModelElement>().Uuid().toString();
    default: return std::to_string(static_cast<std::int64_t>(value.bits()));
  }
}

ElementPicture pictureOf(const ElementImpl& element) {
  ElementPicture picture;
  picture["class"] = element.classInfo().qualifiedName;
  if (element.isProxy()) return picture;
  forEachProperty(element.classInfo(), [&](const PropertyInfo& property) {
    picture[keyOf(property)] = pictureOf(element.get(property));
  });
  return picture;
}

Picture pictureOf(const Model& model) {
  Picture picture;
  for (const ModelElement& element : model->elements(ModelElement::classInfo())) {
    picture[element.Uuid().toString()] = pictureOf(*element.impl());
  }
  return picture;
}

std::string apply(const ChangeSet& changes, Picture& picture) {
  std::string wrong;
  for (const Change& change : changes) {
    const std::string identity = change.Uuid().toString();
    const bool known = picture.contains(identity);
    if (known == (change.kind() == ChangeKind::kCreated)) {
      wrong += identity + (known ? ": created twice\n" : ": not known\n");
      continue;
    }
    if (change.kind() == ChangeKind::kCreated) {
      picture[identity] = pictureOf(*change.element().impl());
    } else if (change.kind() == ChangeKind::kDestroyed) {
      picture.erase(identity);
    } else {
      std::string& text = picture[identity][keyOf(*change.property())];
      const std::string old = pictureOf(change.oldValue());
      if (old != text) {
        wrong += identity + '.' + keyOf(*change.property()) + ": was " + text + ", said to be " +
                 old + '\n';
      }
      text = pictureOf(change.newValue());
    }
  }
  return wrong;
}

std::string differences(const Picture& expected, const Picture& actual) {
  std::string found;
  for (const auto& [identity, element] : expected) {
    const auto other = actual.find(identity);
    if (other == actual.end()) {
      found += identity + ": missing\n";
      continue;
    }
    for (const auto& [name, text] : element) {
      const std::string& now = other->second.at(name);
      if (now != text) found += identity + '.' + name + ": " + text + " -> " + now + '\n';
    }
  }
  for (const auto& [identity, element] : actual) {
    if (!expected.contains(identity)) found += identity + ": new\n";
  }
  return found;
}

}  // namespace mf::zero::testing

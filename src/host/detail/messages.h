// The host's own messages, each written once. fail("NullArray") is checked at compile
// time: a key without a text does not build.
#pragma once

#include <initializer_list>
#include <string_view>

#include "host/diagnostic.h"

namespace vexal::detail {

inline constexpr std::string_view kHostCatalog = "Vexal:host";
inline constexpr std::string_view kClassCatalog = "Vexal:class";

inline constexpr MessageText kHostTexts[] = {
    {"CallDepthExceeded", "The call of '{0}' nests more than {1} calls deep."},
    {"FixedObject", "The fields of a {0} cannot be changed: it stands for a native value."},
    {"FunctionFailed", "The function '{0}' failed: {1}"},
    {"IndexOutOfRange", "Index {0} is past the end: there are {1} elements, counted from 0."},
    {"InvalidDistribution", "{0}: {1}"},
    {"InvalidFieldName", "'{0}' cannot be a field name: it is empty or already taken."},
    {"InvalidFunction", "The function '{0}' needs a name and a body."},
    {"InvalidLevelCount",
     "Level count {0} is {1}: a full factorial needs whole numbers that are not negative."},
    {"InvalidSize", "{0} is not a size: a size is a whole number that is not negative."},
    {"InvalidUtf16", "The text is not well-formed UTF-16: unpaired surrogate at index {0}."},
    {"InvalidUtf8", "The text is not well-formed UTF-8: bad byte at index {0}."},
    {"ModuleEntryMissing", "The module '{0}' has no entry point '{1}'."},
    {"ModuleNotLoaded", "The module '{0}' is not loaded: {1}"},
    {"NoSuchField", "There is no field '{0}' in a {1}."},
    {"NotADistribution",
     "'random' needs a distribution, an object whose class has a method 'random'; given was: {0}."},
    {"NotARowVector", "'{0}' needs a row vector of doubles; given was: {1}."},
    {"NotAScalar", "Input {1} of '{0}' must be one number; given was: {2}."},
    {"NotText", "Expected a row of characters; given was: {0}."},
    {"NullArray", "An array was expected where there is none."},
    {"OutOfMemory", "There is not enough memory."},
    {"OutputNotSet", "The function '{0}' did not give its output {1}."},
    {"TooFewDimensions", "An array has at least two dimensions; given were {0}."},
    {"TooFewInputs", "Too few inputs for the function '{0}': needed {1} or more, given {2}."},
    {"TooManyCombinations", "A full factorial of {0} factors has more combinations than fit."},
    {"TooManyDimensions", "An array of {0} dimensions is not supported."},
    {"TooManyElements", "An array of size {0} is larger than can be addressed."},
    {"TooManyInputs", "Too many inputs for the function '{0}': taken {1} or fewer, given {2}."},
    {"TooManyOutputs",
     "Too many outputs asked of the function '{0}': it has {1} or fewer, asked for {2}."},
    {"UnknownError", "A host call failed without saying why."},
    {"UnknownFunction", "There is no function '{0}'."},
    {"WrongClass", "Expected a {0} array; given was: {1}."},
    {"WrongThread", "The host was used from a thread other than its own."},
};

inline constexpr MessageText kClassTexts[] = {
    {"AbstractClass", "The class '{0}' is abstract: it has no objects of its own."},
    {"AlreadyBound", "The native of a {0} has a host object already."},
    {"CannotConvert", "A value of type '{0}' is expected; given was: {1}."},
    {"ClassExists", "The class '{0}' is already defined."},
    {"ConversionExists", "There is a conversion from '{0}' to '{1}' already."},
    {"ElementClass", "A {0} cannot be an element of a {1}."},
    {"ForArgument", "This was for the argument '{0}' of '{1}'."},
    {"ForProperty", "This was for the property '{0}' of a {1}."},
    {"InvalidHandle", "The object no longer refers to a live element."},
    {"InvalidName", "'{0}' is not a name for a class, method or package."},
    {"InvalidSignature", "The signature of '{0}' is not sound: {1}."},
    {"MethodExists", "The class '{0}' already has a method '{1}'."},
    {"NameExists", "'{0}' is already defined."},
    {"NoSuchMember", "There is no '{1}' in the class '{0}'."},
    {"NotACollection", "'{1}' of the class '{0}' holds no collection of objects."},
    {"NotAMethod", "'{1}' of the class '{0}' is not a method that can be called like this."},
    {"NotAProperty", "'{1}' of the class '{0}' is a method, not a property."},
    {"NotAValueClass", "'{0}' is not a class of values."},
    {"NotAnObject", "Expected a 1-by-1 object; given was: {0}."},
    {"NotConstructed", "The constructor of '{0}' gave no object."},
    {"NotConstructible", "Objects of the class '{0}' cannot be constructed."},
    {"ReadOnlyProperty", "The property '{1}' of the class '{0}' is read-only."},
    {"SuperclassCycle", "The class '{0}' would be its own superclass."},
    {"TooFewArguments", "'{0}' needs at least {1} arguments; given were {2}."},
    {"TooManyArguments", "'{0}' takes at most {1} arguments; given were {2}."},
    {"UnknownClass", "There is no class '{0}'."},
    {"UnknownParentPackage", "The package '{1}', which is to hold '{0}', is not known."},
    {"UnknownType", "There is no data type '{0}'."},
    {"WrongShape", "A '{0}' is expected; the size does not fit: {1}."},
};

/// A key of the two tables above.
class Key {
 public:
  consteval Key(const char* key) : id_{catalogOf(key), key} {}
  constexpr MessageId id() const { return id_; }

 private:
  static consteval std::string_view catalogOf(std::string_view key) {
    for (const MessageText& entry : kHostTexts) {
      if (entry.key == key) return kHostCatalog;
    }
    for (const MessageText& entry : kClassTexts) {
      if (entry.key == key) return kClassCatalog;
    }
    throw "the key has no text";
  }
  MessageId id_;
};

[[noreturn]] inline void fail(Key key, std::initializer_list<std::string_view> arguments = {}) {
  raise(key.id(), arguments);
}

}  // namespace vexal::detail

#include "framework/mi/enum_class.h"

#include <memory>
#include <string>

#include "framework/messages.h"
#include "framework/mi/enum_value_marshaler.h"
#include "framework/mi/host_objects.h"
#include "framework/text.h"
#include "host/text.h"
#include "host/vcos/name.h"
#include "host/vcos/om.h"

namespace mf::zero::mi {

using vcos::COSClass;
using vcos::COSTypeRepository;
using vcos::factory::MethodCall;
using vexal::ArrayPtr;

// Integers and members

std::int32_t enumInteger(const EnumInfo& info, const vxArray* array) {
  const bool isMember = array != nullptr && omIsVCOS(array) &&
                        vexal::className(array) == info.qualifiedName && !vexal::isEmpty(array);
  if (!isMember) return 0;
  return vexal::elements<std::int32_t>(omGetUnderlyingArray(array).get())[0];
}

ArrayPtr enumMember(const EnumInfo& info, std::int32_t integer) {
  return vcos::createValueObject(hostClassOf(info), integer);
}

std::string_view enumDataType(const EnumInfo& info) {
  std::string text(vcos::factory::detail::kStringScalar);
  text.replace(0, vcos::factory::detail::kStringType.size(), info.qualifiedName);
  return vcos::internal::keptForEver(text);
}

namespace {

// The words of a value for a look-up by name: its text, or how it would be written.
std::string wordOf(const vxArray* value) {
  if (vexal::isClass(value, vexal::ClassId::Char) && vexal::dimensions(value)[0] <= 1) {
    return toUtf8(vexal::charText(value));
  }
  if (vexal::isCell(value) && vexal::elementCount(value) == 1) {
    return wordOf(vexal::cellElement(value, 0));
  }
  const bool isNumber = !vexal::isClass(value, vexal::ClassId::Object) &&
                        !vexal::isClass(value, vexal::ClassId::Struct) && !vexal::isCell(value) &&
                        vexal::elementCount(value) == 1;
  if (!isNumber) return vexal::describe(value);
  const ArrayPtr number = COSTypeRepository::convert(value, "double scalar");
  return vexal::formatNumber(vexal::doubleData(number.get())[0]);
}

[[noreturn]] void refuse(const COSClass& hostClass, std::string_view word) {
  reportException(mf0::messages::NoSuchLiteral(hostClass.name(), word));
}

std::int32_t integerOf(const MethodCall& call) {
  return vexal::elements<std::int32_t>(omGetUnderlyingArray(call.object).get())[0];
}

std::string_view nameOf(const MethodCall& call) {
  const vcos::COSEnumInfo* const member = call.hostClass.member(integerOf(call));
  return member ? member->name : std::string_view();
}

ArrayPtr getValue(const MethodCall& call) { return vexal::createInt32(integerOf(call)); }
ArrayPtr getName(const MethodCall& call) { return vexal::createChar(nameOf(call)); }

constexpr vcos::factory::VcosMethod kMemberMethods[] = {
    {.name = "getValue",
     .outputType = "int32 scalar",
     .body = &getValue,
     .doc = "The member's integer."},
    {.name = "getLiteral",
     .outputType = vcos::factory::detail::kStringScalar,
     .body = &getName,
     .doc = "The member's literal."},
    {.name = "getPublicIdentifier",
     .outputType = vcos::factory::detail::kStringScalar,
     .body = &getName,
     .doc = "The name by which scripts know the member."},
};

}  // namespace

namespace detail {

ArrayPtr constructMember(const MethodCall& call) {
  const vxArray* const value = call.inputs[0];
  const bool isNumber = !vexal::isClass(value, vexal::ClassId::Char) &&
                        !vexal::isClass(value, vexal::ClassId::Object);
  if (!isNumber && vexal::isEmpty(value)) refuse(call.hostClass, "");
  if (!isNumber) return COSTypeRepository::convert(value, call.hostClass.name());
  const ArrayPtr whole = COSTypeRepository::convert(value, "int32 scalar");
  const std::int32_t integer = vexal::elements<std::int32_t>(whole.get())[0];
  // 0 is no literal, but what a property that holds none answers.
  if (integer != 0 && !call.hostClass.member(integer))
    refuse(call.hostClass, std::to_string(integer));
  return vcos::createValueObject(call.hostClass, integer);
}

void addMemberMethods(vcos::ClassDefinition& definition) {
  definition.methods.insert(definition.methods.end(), std::begin(kMemberMethods),
                            std::end(kMemberMethods));
}

}  // namespace detail

// Conversions

ArrayPtr FromAnyAsStringTypeConverter::convert(const vxArray* value) {
  if (vexal::isEmpty(value)) return omCreateVCOSEmpty(hostClass_->name());
  if (vexal::className(value) == hostClass_->name()) {
    return enumMember(*enum_, enumInteger(*enum_, value));
  }
  const std::string word = wordOf(value);
  const LiteralInfo* const literal = enum_->find(std::u16string_view(toUtf16(word)));
  if (!literal) refuse(*hostClass_, word);
  return vcos::createValueObject(*hostClass_, literal->value);
}

void installConversions(const EnumInfo& info) {
  const COSClass& hostClass = hostClassOf(info);
  for (const char* const shape : {"", " property", " scalar"}) {
    const std::string target = std::string(info.qualifiedName) + shape;
    COSTypeRepository::removeConversion("any", target);
    COSTypeRepository::addConversion(
        "any", target, std::make_unique<FromAnyAsStringTypeConverter>(&hostClass, &info));
  }
}

}  // namespace mf::zero::mi

// Functions by name: the table that natives and scripts extend, and the call that never
// throws.
//
// A call looks first for a method of that name on the class of its first object input
// (object.h), then in the table.
#pragma once

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "host/array.h"
#include "host/diagnostic.h"
#include "host/export.h"

namespace vexal {

/// How many inputs and outputs a function takes.
struct Arity {
  static constexpr std::size_t kAny = std::numeric_limits<std::size_t>::max();
  std::size_t minInputs = 0;
  std::size_t maxInputs = kAny;
  std::size_t maxOutputs = 1;
};

/// One call in progress, as the called function sees it.
class Call {
 public:
  Call(std::string_view name, std::span<vxArray*> outputs, std::span<const vxArray* const> inputs)
      : name_(name), outputs_(outputs), inputs_(inputs) {}

  std::string_view name() const noexcept { return name_; }
  std::size_t outputCount() const noexcept { return outputs_.size(); }
  std::size_t inputCount() const noexcept { return inputs_.size(); }

  /// The k-th input, borrowed from the caller; never null. Raises
  /// "Vexal:host:IndexOutOfRange" past the end.
  VEXAL_API const vxArray* input(std::size_t k) const;

  /// Gives the k-th output, in place of an earlier one; dropped when the caller asked
  /// for fewer.
  VEXAL_API void setOutput(std::size_t k, ArrayPtr value) noexcept;

 private:
  std::string_view name_;
  std::span<vxArray*> outputs_;
  std::span<const vxArray* const> inputs_;
};

/// A function of the host. The body must set every output that the caller asked for and
/// reports failure by an exception: a HostError arrives at the caller as it is, any
/// other in "Vexal:host:FunctionFailed".
struct HostFunction {
  Arity arity;
  std::function<void(Call&)> body;
};

/// Puts a function into the table and returns the one it replaces. Raises
/// "Vexal:host:InvalidFunction" for an empty name or a function without a body.
VEXAL_API std::optional<HostFunction> defineFunction(std::string_view name, HostFunction function);

/// Takes a function out of the table and returns it; nothing for an unknown name. A
/// call in progress runs to its end.
VEXAL_API std::optional<HostFunction> removeFunction(std::string_view name);

VEXAL_API bool isFunction(std::string_view name);

/// A function that is in the table for the lifetime of this object, after which the
/// one before it is back.
class ScopedFunction {
 public:
  ScopedFunction(std::string name, HostFunction function)
      : name_(std::move(name)), previous_(defineFunction(name_, std::move(function))) {}
  ~ScopedFunction() {
    previous_ ? defineFunction(name_, *std::move(previous_)) : removeFunction(name_);
  }
  ScopedFunction(const ScopedFunction&) = delete;
  ScopedFunction& operator=(const ScopedFunction&) = delete;

 private:
  std::string name_;
  std::optional<HostFunction> previous_;
};

/// Calls a function by name and never throws. On success the result is null and every
/// output slot holds an array that the caller owns; on failure it is the diagnostic and
/// every slot is null. What the slots held before is not looked at. Failures are
/// "Vexal:host:" UnknownFunction, TooFewInputs, TooManyInputs, TooManyOutputs,
/// NullArray (a null input), OutputNotSet, CallDepthExceeded, WrongThread, and whatever
/// the function reports.
VEXAL_API std::unique_ptr<Diagnostic> callFunction(std::size_t outputCount, vxArray** outputs,
                                                   std::size_t inputCount,
                                                   const vxArray* const* inputs,
                                                   std::string_view name) noexcept;

/// The one output of a call; throws the HostError of a failing one.
VEXAL_API ArrayPtr evaluate(std::string_view name, std::initializer_list<const vxArray*> inputs);

}  // namespace vexal

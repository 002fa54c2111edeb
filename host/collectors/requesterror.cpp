// SPDX-License-Identifier: Apache-2.0
#include "host/collectors/requesterror.h"

#include <cxxabi.h>

#include <cstdlib>
#include <exception>
#include <memory>
#include <typeinfo>

#include "vel/exception.h"

namespace velhost {
namespace {

struct Free {
  void operator()(char* text) const noexcept {
    std::free(text);  // NOLINT(*-no-malloc,*-owning-memory): __cxa_demangle gives malloc's memory
  }
};

std::string currentTypeName() {
  const std::type_info* const type = abi::__cxa_current_exception_type();
  if (type == nullptr) return "unknown exception";
  int status = 0;
  const std::unique_ptr<char, Free> name(
      abi::__cxa_demangle(type->name(), nullptr, nullptr, &status));
  return name ? name.get() : type->name();
}

}  // namespace

RequestError describeCurrentException() {
  try {
    throw;
  } catch (const NKRXVEL20::TVELException& error) {
    return {"TVELException", error.GetCode(), error.what()};
  } catch (const std::exception& error) {
    return {currentTypeName(), std::nullopt, error.what()};
  } catch (...) {
    return {currentTypeName(), std::nullopt, ""};
  }
}

std::string errorText(const RequestError& error) {
  if (!error.wasAsked) return error.what;
  std::string text = error.exception;
  if (error.code) text += " code " + std::to_string(*error.code);
  if (!error.what.empty()) text += ": " + error.what;
  return text;
}

}  // namespace velhost

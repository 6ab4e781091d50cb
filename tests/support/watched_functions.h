// What the functions share that tests/api/watched_functions.cmake writes.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <korvel/korvel.h>

#include <algorithm>
#include <initializer_list>

namespace korvel_test {

// Calls the library's function of this name, and returns its code. Fails the test unless that is a success or listed.
template <auto function, class... Arguments>
KORVEL_RETURN_CODE Watch(const char* name, std::initializer_list<KORVEL_RETURN_CODE> listed, Arguments... arguments) {
  static const auto next = reinterpret_cast<decltype(function)>(dlsym(RTLD_NEXT, name));
  const KORVEL_RETURN_CODE code = next(arguments...);
  if (code != KORVEL_RETURN_CODE_Success && std::ranges::find(listed, code) == listed.end()) {
    ADD_FAILURE() << name << " returned " << code << ", which korvel.h doesn't list for it.";
  }
  return code;
}

}  // namespace korvel_test

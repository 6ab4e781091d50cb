// Objects that outlive everything else in the process.
#pragma once

namespace korvel::internal {

// Holds an object that is never destroyed. Applications may call the library from destructors of their own static
// objects, which can come after those of the library's.
template <class T>
union NeverDestroyed {
  constexpr NeverDestroyed() : object() {}
  constexpr ~NeverDestroyed() {}  // NOLINT(modernize-use-equals-default): of a union, it would be deleted
  NeverDestroyed(const NeverDestroyed&) = delete;
  NeverDestroyed& operator=(const NeverDestroyed&) = delete;

  T object;
};

}  // namespace korvel::internal

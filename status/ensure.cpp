#include "status/ensure.h"

#include "status/exceptions.h"

void korvel::internal::Ensure(bool condition, const std::string& where, ImgStatusCode status) {
  if (condition) return;
  ThrowStatus<cfg_libimg::Modules::Processing>(
      status,
      "void korvel::internal::Ensure(bool, const std::string &, korvel::internal::ImgStatusCode) "
      "[Module = utilx::ExceptionModule<cfg_libimg::Modules::Processing>]",
      "Ensure failed @ " + where);
}

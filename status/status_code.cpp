#include "status/status_code.h"

#include <map>

namespace {

std::string TextAndNumber(int value) {
#define KORVEL_STATUS_ENTRY(name, number) {number, #name},
  static const std::map<int, std::string> texts = {KORVEL_GENERIC_STATUS_CODES(KORVEL_STATUS_ENTRY)
                                                       KORVEL_IMAGE_STATUS_CODES(KORVEL_STATUS_ENTRY)};
#undef KORVEL_STATUS_ENTRY
  const auto found = texts.find(value);
  return (found == texts.end() ? "Unknown" : found->second) + "[" + std::to_string(value) + "]";
}

}  // namespace

std::string utilx::conversion::StatusToText(StatusCode status) { return TextAndNumber(static_cast<int>(status)); }

std::string korvel::internal::ImgStatusCodeToString(ImgStatusCode status) {
  return TextAndNumber(static_cast<int>(status));
}

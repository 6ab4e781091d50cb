#include "status/log.h"

#include <syslog.h>

#include <cstddef>

namespace utilx {
namespace {

constexpr size_t kModuleNameField = 20;
constexpr size_t kSpacesPerIndent = 4;

thread_local int logIndent = 0;

}  // namespace

void LogStatusException(std::string_view moduleLogName, const std::string& text) {
  std::string line = "|X| ";
  line += moduleLogName;
  if (moduleLogName.size() < kModuleNameField) line.append(kModuleNameField - moduleLogName.size(), ' ');
  line += "| ";
  line.append(kSpacesPerIndent * static_cast<size_t>(logIndent), ' ');
  line += text;
  line += '\n';
  syslog(LOG_USER | LOG_ERR, "%s", line.c_str());
}

}  // namespace utilx

#include "command_formats.h"

#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "format_names.h"
#include "korvel/korvel.h"
#include "library_error.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

struct FormatProperties {
  NamedFormat format;
  size_t channels = 0;
  size_t significant_bits_per_channel = 0;
  size_t significant_bits_per_pixel = 0;
  size_t storage_bits_per_channel = 0;
  size_t storage_bits_per_pixel = 0;
  uint32_t maximum = 0;
};

template <class Value>
Value Ask(KORVEL_RETURN_CODE (*query)(uint32_t, Value*), const NamedFormat& format) {
  Value value{};
  Require(query(format.id, &value), "look up the properties of " + std::string(format.name), kVersionAdvice);
  return value;
}

FormatProperties Properties(const NamedFormat& format) {
  FormatProperties properties{.format = format};
  properties.channels = Ask(KORVEL_PixelFormat_GetNumChannels, format);
  properties.significant_bits_per_channel = Ask(KORVEL_PixelFormat_GetNumSignificantBitsPerChannel, format);
  properties.significant_bits_per_pixel = Ask(KORVEL_PixelFormat_GetNumSignificantBitsPerPixel, format);
  properties.storage_bits_per_channel = Ask(KORVEL_PixelFormat_GetNumStorageBitsPerChannel, format);
  properties.storage_bits_per_pixel = Ask(KORVEL_PixelFormat_GetNumStorageBitsPerPixel, format);
  properties.maximum = Ask(KORVEL_PixelFormat_GetMaximumValuePerChannel, format);
  return properties;
}

std::vector<FormatProperties> Catalogue() {
  std::vector<FormatProperties> catalogue;
  for (const NamedFormat& format : AllFormats()) catalogue.push_back(Properties(format));
  return catalogue;
}

void PrintTable(const std::vector<FormatProperties>& catalogue) {
  std::cout << "Id          Name             Channels  Significant bits    Storage bits  Maximum\n"
               "                                       channel    pixel  channel  pixel\n";
  for (const FormatProperties& row : catalogue) {
    std::cout << HexadecimalId(row.format.id) << "  " << std::left << std::setw(15) << row.format.name << std::right
              << std::setw(10) << row.channels << std::setw(10) << row.significant_bits_per_channel << std::setw(9)
              << row.significant_bits_per_pixel << std::setw(9) << row.storage_bits_per_channel << std::setw(7)
              << row.storage_bits_per_pixel << std::setw(9) << row.maximum << '\n';
  }
}

void PrintJson(const std::vector<FormatProperties>& catalogue) {
  auto rows = nlohmann::ordered_json::array();
  for (const FormatProperties& row : catalogue) {
    rows.push_back({{"name", row.format.name},
                    {"id", row.format.id},
                    {"hexadecimalId", HexadecimalId(row.format.id)},
                    {"channels", row.channels},
                    {"significantBitsPerChannel", row.significant_bits_per_channel},
                    {"significantBitsPerPixel", row.significant_bits_per_pixel},
                    {"storageBitsPerChannel", row.storage_bits_per_channel},
                    {"storageBitsPerPixel", row.storage_bits_per_pixel},
                    {"maximum", row.maximum}});
  }
  std::cout << rows.dump(2) << '\n';
}

}  // namespace

void AddFormatsCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("formats", "List the pixel formats and their properties");
  const auto as_json = std::make_shared<bool>(false);
  command->add_flag("--json", *as_json, "Print an array of objects in JSON instead of a table");
  command->footer("Examples:\n  korvel formats\n  korvel formats --json");
  command->callback([as_json] {
    if (*as_json) {
      PrintJson(Catalogue());
    } else {
      PrintTable(Catalogue());
    }
  });
}

}  // namespace korvel::tools

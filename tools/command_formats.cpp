#include "command_formats.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foreign_names.h"
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

std::vector<FormatProperties> PropertiesOf(const std::vector<NamedFormat>& formats) {
  std::vector<FormatProperties> properties;
  for (const NamedFormat& format : formats) properties.push_back(Properties(format));
  return properties;
}

void PrintTable(const std::vector<FormatProperties>& formats) {
  std::cout << "Id          Name             Channels  Significant bits    Storage bits  Maximum\n"
               "                                       channel    pixel  channel  pixel\n";
  for (const FormatProperties& row : formats) {
    std::cout << HexadecimalId(row.format.id) << "  " << std::left << std::setw(15) << row.format.name << std::right
              << std::setw(10) << row.channels << std::setw(10) << row.significant_bits_per_channel << std::setw(9)
              << row.significant_bits_per_pixel << std::setw(9) << row.storage_bits_per_channel << std::setw(7)
              << row.storage_bits_per_pixel << std::setw(9) << row.maximum << '\n';
  }
}

void PrintJson(const std::vector<FormatProperties>& formats) {
  auto rows = nlohmann::ordered_json::array();
  for (const FormatProperties& row : formats) {
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

// Formats and what others call them, as the cells of a table. Remarks are numbered, and stand below it.
struct NameTable {
  std::vector<std::vector<std::string>> rows;  // the first is the heading
  std::vector<std::string> remarks;
};

std::string Mark(NameTable& table, std::string_view remark) {
  if (remark.empty()) return "";
  const auto known = std::find(table.remarks.begin(), table.remarks.end(), remark);
  const auto number = known - table.remarks.begin() + 1;
  if (known == table.remarks.end()) table.remarks.emplace_back(remark);
  return " (" + std::to_string(number) + ")";
}

// code(text) marks up what is typed as it stands.
template <class Code>
NameTable MakeNameTable(const std::vector<NamedFormat>& formats, const std::vector<VocabularyFacts>& vocabularies,
                        Code&& code) {
  NameTable table;
  std::vector<std::string>& heading = table.rows.emplace_back(1, "Format");
  for (const VocabularyFacts& vocabulary : vocabularies) {
    heading.emplace_back(vocabulary.title);
    if (!vocabulary.detail.empty()) heading.emplace_back(vocabulary.detail);
  }
  for (const NamedFormat& format : formats) {
    std::vector<std::string> row{code(format.name)};
    for (const VocabularyFacts& vocabulary : vocabularies) {
      const ForeignName foreign = NameIn(vocabulary.vocabulary, format);
      row.push_back(foreign.name.empty() ? "-" : code(foreign.name) + Mark(table, foreign.remark));
      if (!vocabulary.detail.empty()) row.push_back(foreign.detail.empty() ? "-" : code(foreign.detail));
    }
    table.rows.push_back(std::move(row));
  }
  return table;
}

void PrintRemarks(const NameTable& table) {
  if (!table.remarks.empty()) std::cout << '\n';
  for (size_t i = 0; i < table.remarks.size(); ++i) std::cout << '(' << i + 1 << ") " << table.remarks[i] << '\n';
}

void PrintNames(const std::vector<NamedFormat>& formats, const std::vector<VocabularyFacts>& vocabularies) {
  const NameTable table = MakeNameTable(formats, vocabularies, [](std::string_view text) { return std::string(text); });
  std::vector<size_t> widths(table.rows.front().size());
  for (const std::vector<std::string>& row : table.rows) {
    for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
  }
  for (const std::vector<std::string>& row : table.rows) {
    for (size_t i = 0; i + 1 < row.size(); ++i)
      std::cout << std::left << std::setw(static_cast<int>(widths[i]) + 2) << row[i];
    std::cout << row.back() << '\n';
  }
  PrintRemarks(table);
}

void PrintMarkdown(const std::vector<NamedFormat>& formats, const std::vector<VocabularyFacts>& vocabularies) {
  const NameTable table =
      MakeNameTable(formats, vocabularies, [](std::string_view text) { return "`" + std::string(text) + "`"; });
  for (const std::vector<std::string>& row : table.rows) {
    std::cout << '|';
    for (const std::string& cell : row) std::cout << ' ' << cell << " |";
    std::cout << '\n';
    if (&row != &table.rows.front()) continue;
    std::cout << '|';
    for (size_t i = 0; i < row.size(); ++i) std::cout << " --- |";
    std::cout << '\n';
  }
  PrintRemarks(table);
}

void PrintNamesAsJson(const std::vector<NamedFormat>& formats, const std::vector<VocabularyFacts>& vocabularies) {
  const auto text_or_null = [](std::string_view text) {
    return text.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(text);
  };
  auto rows = nlohmann::ordered_json::array();
  for (const NamedFormat& format : formats) {
    nlohmann::ordered_json row{{"name", format.name}};
    for (const VocabularyFacts& vocabulary : vocabularies) {
      const ForeignName foreign = NameIn(vocabulary.vocabulary, format);
      nlohmann::ordered_json entry{{"name", text_or_null(foreign.name)}};
      if (!vocabulary.detail.empty()) entry[std::string(vocabulary.detail)] = text_or_null(foreign.detail);
      entry["remark"] = text_or_null(foreign.remark);
      row[std::string(vocabulary.option)] = std::move(entry);
    }
    rows.push_back(std::move(row));
  }
  std::cout << rows.dump(2) << '\n';
}

struct FormatsArguments {
  std::string name;
  std::string as;
  bool as_json = false;
  bool as_markdown = false;
};

void ListFormats(const FormatsArguments& arguments) {
  std::optional<Vocabulary> wanted;
  if (!arguments.as.empty()) wanted = ParseVocabulary(arguments.as);
  const std::span<const NamedFormat> all = AllFormats();
  const std::vector<NamedFormat> formats =
      arguments.name.empty() ? std::vector<NamedFormat>(all.begin(), all.end()) : FormatsCalled(arguments.name, wanted);
  if (arguments.as.empty()) {
    arguments.as_json ? PrintJson(PropertiesOf(formats)) : PrintTable(PropertiesOf(formats));
    return;
  }
  std::vector<VocabularyFacts> vocabularies;
  for (const VocabularyFacts& vocabulary : AllVocabularies()) {
    if (!wanted || vocabulary.vocabulary == *wanted) vocabularies.push_back(vocabulary);
  }
  if (arguments.as_json) {
    PrintNamesAsJson(formats, vocabularies);
  } else if (arguments.as_markdown) {
    PrintMarkdown(formats, vocabularies);
  } else {
    PrintNames(formats, vocabularies);
  }
}

}  // namespace

void AddFormatsCommand(CLI::App& app) {
  CLI::App* command = app.add_subcommand("formats", "List the pixel formats, and their names in other programs");
  const auto arguments = std::make_shared<FormatsArguments>();
  command->add_option("NAME", arguments->name, "This format alone, by its name here or elsewhere");
  CLI::Option* as =
      command->add_option("--as", arguments->as, "What these programs call them")->type_name(WordsOfAs("|"));
  CLI::Option* json = command->add_flag("--json", arguments->as_json, "Print an array of objects in JSON");
  command->add_flag("--markdown", arguments->as_markdown, "Print the names as a Markdown table")
      ->needs(as)
      ->excludes(json);
  command->footer(
      "Without --as, each format's id and how its pixels are made up. With it, what another program calls the same\n"
      "bytes, - where it has no name for them, and numbers that lead to remarks below. V4L2 has four characters for\n"
      "each as well. OpenCV's types don't tell what the channels mean; cvtColor gives BGR by the code beside them. It\n"
      "names a mosaic by another pixel: BayerRG is COLOR_BayerBG2BGR. GStreamer takes lines to begin at multiples of\n"
      "4 bytes.\n"
      "\n"
      "NAME may be one of this list or of the other program, with or without what its names begin with in code, such\n"
      "as V4L2_PIX_FMT_. A name that means several formats lists them all.\n"
      "\n"
      "Examples:\n"
      "  korvel formats\n"
      "  korvel formats --json\n"
      "  korvel formats BayerRG12p\n"
      "  korvel formats --as opencv\n"
      "  korvel formats --as v4l2 BayerRG10g40Qrv\n"
      "  korvel formats --as v4l2 pRAA\n"
      "  korvel formats --as ffmpeg bayer_rggb8 --json\n"
      "  korvel formats --as all --markdown");
  command->callback([arguments] { ListFormats(*arguments); });
}

}  // namespace korvel::tools

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "buffers/buffer_pool.h"
#include "buffers/vector_image_buffer.h"
#include "core/image.h"
#include "figures/figures.h"
#include "format_names.h"
#include "pixel_file.h"
#include "processing/conversion/image_converter.h"
#include "status/exceptions.h"
#include "tool_error.h"

namespace korvel::tools {
namespace {

using img::PixelFormatId;

constexpr img::Size2D kSize{32, 32};

// A pool that notes the formats of the images that it is asked for: those that a conversion goes through.
class NotingPool final : public img::buffer::IfcMultiFormatBufferPool {
 public:
  std::shared_ptr<img::buffer::IfcImageBuffer> AllocBuffer(PixelFormatId format, const img::Size2D& size) override {
    noted_.push_back(format);
    return img::buffer::VectorImageBuffer::AllocBuffer(format, size);
  }

  void Reset() override { noted_.clear(); }
  void WaitUntilAllFree() override {}
  size_t NumBuffers() const override { return 0; }
  size_t NumBuffersInUse() const override { return 0; }
  size_t TotalByteCount() const override { return 0; }
  size_t PreAllocate(PixelFormatId, const img::Size2D&, size_t) override { return 0; }

  const std::vector<PixelFormatId>& Noted() const { return noted_; }

 private:
  std::vector<PixelFormatId> noted_;
};

bool IsPacked(const NamedFormat& format) { return format.layout != PixelLayout::kUnpacked; }
bool IsMono(const NamedFormat& format) { return format.family == PixelFamily::kMono; }

std::string StageName(const NamedFormat& from, const NamedFormat& to) {
  if (from.id == to.id) return "copy";
  if (IsBayer(from) && !IsBayer(to)) return IsMono(to) ? "weigh" : "demosaic";
  if (IsMono(from) && !IsMono(to)) return "spread";
  if (IsPacked(from)) return "unpack";
  return from.family != to.family ? "swap" : "depth";
}

using Chain = std::vector<std::string>;  // empty where a pair doesn't convert

// The chain as it is walked where nothing shortens it: without vector instructions.
class Chains {
 public:
  Chain Of(const NamedFormat& from, const NamedFormat& to) {
    pool_->Reset();
    const std::shared_ptr<img::IfcImage> input =
        img::buffer::VectorImageBuffer::AllocBuffer(PixelFormatId{from.id}, kSize)->CreateImage();
    try {
      converter_.ConvertPixelFormat(input, PixelFormatId{to.id});
    } catch (const korvel::internal::ImgException&) {
      return {};
    }
    Chain chain;
    const NamedFormat* before = &from;
    for (const PixelFormatId id : pool_->Noted()) {
      const NamedFormat& after = *std::find_if(AllFormats().begin(), AllFormats().end(), [&](const NamedFormat& each) {
        return each.id == static_cast<uint32_t>(id);
      });
      chain.push_back(StageName(*before, after));
      before = &after;
    }
    return chain;
  }

  // Whether the list that applications are given names the pair.
  bool IsListed(const NamedFormat& from, const NamedFormat& to) const {
    const std::vector<PixelFormatId> outputs = converter_.GetSupportedOutputPixelFormats(PixelFormatId{from.id});
    return std::find(outputs.begin(), outputs.end(), PixelFormatId{to.id}) != outputs.end();
  }

 private:
  std::shared_ptr<NotingPool> pool_ = std::make_shared<NotingPool>();
  img::processing::ImageConverter converter_{pool_, img::ProcessorFeatures{}};
};

// Formats of all depths, and of all phases, stand in one line of the table.
std::string_view KindOf(const NamedFormat& format) {
  if (format.layout == PixelLayout::kWord32) return format.name;
  if (IsMono(format)) return IsPacked(format) ? "Mono, packed" : "Mono";
  if (IsBayer(format)) return IsPacked(format) ? "Bayer, packed" : "Bayer";
  switch (format.family) {
    case PixelFamily::kRGB:
      return "RGB";
    case PixelFamily::kBGR:
      return "BGR";
    case PixelFamily::kRGBa:
      return "RGBa";
    default:
      return "BGRa";
  }
}

constexpr std::string_view kKinds[] = {"Mono", "Mono, packed", "Bayer", "Bayer, packed", "RGB",
                                       "BGR",  "RGBa",         "BGRa",  "RGB10p32",      "BGR10p32"};
constexpr std::string_view kStages[] = {"unpack", "depth", "swap", "weigh", "demosaic", "spread"};

// The stages of all pairs of two kinds in the order in which they run; in brackets those that only some pairs need.
std::string Describe(std::span<const Chain> chains) {
  std::string text;
  for (const std::string_view stage : kStages) {
    const auto count = std::count_if(chains.begin(), chains.end(), [&](const Chain& chain) {
      return std::find(chain.begin(), chain.end(), stage) != chain.end();
    });
    if (count == 0) continue;
    if (!text.empty()) text += ", ";
    if (static_cast<size_t>(count) < chains.size()) {
      text += '(';
      text += stage;
      text += ')';
    } else {
      text += stage;
    }
  }
  return text;
}

using Cells = std::map<std::pair<std::string_view, std::string_view>, std::vector<Chain>>;

Cells AskForAllPairs() {
  Chains chains;
  Cells cells;
  for (const NamedFormat& from : AllFormats()) {
    for (const NamedFormat& to : AllFormats()) {
      const Chain chain = chains.Of(from, to);
      if (chain.empty() == chains.IsListed(from, to)) {
        throw ToolError(std::string(from.name) + " to " + std::string(to.name) +
                            " is listed and fails, or converts "
                            "and isn't listed",
                        "Mend the converter's list.");
      }
      // A phase never becomes another; every format becomes itself.
      const bool is_other_phase = IsBayer(from) && IsBayer(to) && from.family != to.family;
      if (is_other_phase && !chain.empty()) throw ToolError("a phase becomes another", "Mend the documents.");
      if (from.id != to.id && !is_other_phase) cells[{KindOf(from), KindOf(to)}].push_back(chain);
    }
  }
  return cells;
}

}  // namespace

void WriteConversionTable(const std::string& folder) {
  const Cells cells = AskForAllPairs();
  const auto converts = [](const std::vector<Chain>& chains) { return !chains.front().empty(); };

  // Kinds that nothing becomes have no column.
  std::vector<std::string_view> columns;
  for (const std::string_view kind : kKinds) {
    if (std::any_of(cells.begin(), cells.end(),
                    [&](const auto& cell) { return cell.first.second == kind && converts(cell.second); })) {
      columns.push_back(kind);
    }
  }

  std::string table = "| From \\ to |";
  const auto add_cell = [&table](std::string_view text) {
    table += ' ';
    table += text;
    table += " |";
  };
  for (const std::string_view column : columns) add_cell(column);
  table += "\n| --- |";
  for (size_t i = 0; i < columns.size(); ++i) add_cell("---");
  for (const std::string_view row : kKinds) {
    table += "\n|";
    add_cell(row);
    for (const std::string_view column : columns) {
      const auto cell = cells.find({row, column});
      if (cell == cells.end()) {  // a kind of one format alone
        add_cell("");
        continue;
      }
      const std::vector<Chain>& chains = cell->second;
      if (std::any_of(chains.begin(), chains.end(),
                      [&](const Chain& chain) { return chain.empty() == converts(chains); })) {
        throw ToolError("only some pairs of " + std::string(row) + " and " + std::string(column) + " convert",
                        "The table needs finer kinds.");
      }
      add_cell(converts(chains) ? Describe(chains) : "-");
    }
  }
  table += "\n";
  WriteBytes(folder + "conversions.md", std::vector<uint8_t>(table.begin(), table.end()).data(), table.size());
}

}  // namespace korvel::tools

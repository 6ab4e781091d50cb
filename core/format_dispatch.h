// From a format id that is known at run time to a class that is compiled for it: MakeFormatClass and its kin make a
// new object of the right instantiation and return it through the interface that all instantiations share.
//
// They run once per operation, or once per change of formats, and never per pixel. A family of classes that is made
// here gives its name with KORVEL_NAME_FOR_DISPATCH, for the locations of failures; so do interfaces and argument
// types, with KORVEL_NAME_TYPE_FOR_DISPATCH.
#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "core/pixel_format.h"

namespace img {
namespace detail {

template <template <PixelFormatId> class T>
struct FormatClassName;

template <template <PixelFormatId, PixelFormatId> class T>
struct FormatPairClassName;

template <class T>
struct DispatchTypeName;

[[noreturn]] void ThrowUnsupportedFormat(PixelFormatId formatId, const char* dispatcher, const char* arguments,
                                         const char* className, const char* interfaceName,
                                         std::initializer_list<const char*> argumentNames);

template <class TClassIfc, class... Args>
[[noreturn]] void ThrowUnsupportedFormat(PixelFormatId formatId, const char* dispatcher, const char* arguments,
                                         const char* className) {
  ThrowUnsupportedFormat(formatId, dispatcher, arguments, className, DispatchTypeName<TClassIfc>::kName,
                         {DispatchTypeName<std::remove_cvref_t<Args>>::kName...});
}

inline constexpr const char* kOneId = "img::PixelFormatId, Args...";
inline constexpr const char* kTwoIds = "img::PixelFormatId, img::PixelFormatId, Args...";

// The cells of one line of a grid: a fixed input format by every output format of a list, where the grid has them.
// kHasCell takes the facts of both formats. A pair outside the grid gives null.
template <auto kHasCell, PixelFormatId in, template <PixelFormatId, PixelFormatId> class T, class TClassIfc,
          class... Args>
std::unique_ptr<TClassIfc> MakePublicCell(PixelFormatId out, Args&&... args) {
  switch (out) {
#define KORVEL_CELL(name)                                                                             \
  case PixelFormatId::name:                                                                           \
    if constexpr (kHasCell(kFacts<in>, kFacts<PixelFormatId::name>)) {                                \
      return std::unique_ptr<TClassIfc>(new T<in, PixelFormatId::name>(std::forward<Args>(args)...)); \
    }                                                                                                 \
    break;
    KORVEL_FOR_EACH_PUBLIC_FORMAT(KORVEL_CELL)
    default:
      break;
  }
  return nullptr;
}

template <auto kHasCell, PixelFormatId in, template <PixelFormatId, PixelFormatId> class T, class TClassIfc,
          class... Args>
std::unique_ptr<TClassIfc> MakeRawCell(PixelFormatId out, Args&&... args) {
  switch (out) {
    KORVEL_FOR_EACH_RAW_FORMAT(KORVEL_CELL)
#undef KORVEL_CELL
    default:
      break;
  }
  return nullptr;
}

// A grid over public formats. kHasLine takes the facts of an input; a line without a cell is not compiled.
template <auto kHasLine, auto kHasCell, template <PixelFormatId, PixelFormatId> class T, class TClassIfc, class... Args>
std::unique_ptr<TClassIfc> MakeFromPublicGrid(PixelFormatId in, PixelFormatId out, Args&&... args) {
  switch (in) {
#define KORVEL_LINE(name)                                                                                   \
  case PixelFormatId::name:                                                                                 \
    if constexpr (kHasLine(kFacts<PixelFormatId::name>)) {                                                  \
      return MakePublicCell<kHasCell, PixelFormatId::name, T, TClassIfc>(out, std::forward<Args>(args)...); \
    }                                                                                                       \
    break;
    KORVEL_FOR_EACH_PUBLIC_FORMAT(KORVEL_LINE)
#undef KORVEL_LINE
    default:
      break;
  }
  return nullptr;
}

// A grid over internal ids.
template <auto kHasCell, template <PixelFormatId, PixelFormatId> class T, class TClassIfc, class... Args>
std::unique_ptr<TClassIfc> MakeFromRawGrid(PixelFormatId in, PixelFormatId out, Args&&... args) {
  switch (in) {
#define KORVEL_LINE(name)   \
  case PixelFormatId::name: \
    return MakeRawCell<kHasCell, PixelFormatId::name, T, TClassIfc>(out, std::forward<Args>(args)...);
    KORVEL_FOR_EACH_RAW_FORMAT(KORVEL_LINE)
#undef KORVEL_LINE
    default:
      break;
  }
  return nullptr;
}

constexpr bool IsPublic(PixelFormatId formatId) {
  const std::optional<FormatFacts> facts = FindFacts(formatId);
  return facts && facts->IsPublic();
}

}  // namespace detail

#define KORVEL_NAME_TYPE_FOR_DISPATCH(type, name) \
  template <>                                     \
  struct img::detail::DispatchTypeName<type> {    \
    static constexpr const char* kName = name;    \
  }
#define KORVEL_NAME_FOR_DISPATCH(classTemplate, name)  \
  template <>                                          \
  struct img::detail::FormatClassName<classTemplate> { \
    static constexpr const char* kName = name;         \
  }
#define KORVEL_NAME_PAIR_FOR_DISPATCH(classTemplate, name) \
  template <>                                              \
  struct img::detail::FormatPairClassName<classTemplate> { \
    static constexpr const char* kName = name;             \
  }

// Makes T<formatId> for a public format or Invalid. Throws InvalidParameterUtilx, "Unsupported formatId: " and the id,
// for any other.
template <template <PixelFormatId> class T, class TClassIfc, class... Args>
std::unique_ptr<TClassIfc> MakeFormatClass(PixelFormatId formatId, Args&&... args) {
  switch (formatId) {
#define KORVEL_CASE(name)   \
  case PixelFormatId::name: \
    return std::unique_ptr<TClassIfc>(new T<PixelFormatId::name>(std::forward<Args>(args)...));
    KORVEL_FOR_EACH_PUBLIC_FORMAT_AND_INVALID(KORVEL_CASE)
#undef KORVEL_CASE
    default:
      detail::ThrowUnsupportedFormat<TClassIfc, Args...>(formatId, "MakeFormatClass", detail::kOneId,
                                                         detail::FormatClassName<T>::kName);
  }
}

// Makes T<in, out> for any two public formats. Names the id that failed, the first if both do.
template <template <PixelFormatId, PixelFormatId> class T, class TClassIfc, class... Args>
std::unique_ptr<TClassIfc> MakeFormatClass(PixelFormatId in, PixelFormatId out, Args&&... args) {
  constexpr auto hasLine = [](const FormatFacts&) { return true; };
  constexpr auto hasCell = [](const FormatFacts&, const FormatFacts&) { return true; };
  auto made = detail::MakeFromPublicGrid<hasLine, hasCell, T, TClassIfc>(in, out, std::forward<Args>(args)...);
  if (!made) {
    detail::ThrowUnsupportedFormat<TClassIfc, Args...>(detail::IsPublic(in) ? out : in, "MakeFormatClass",
                                                       detail::kTwoIds, detail::FormatPairClassName<T>::kName);
  }
  return made;
}

// Makes T<raw in, raw out>: both ids are reduced to their layouts first. A failure names the first layout.
template <template <PixelFormatId, PixelFormatId> class T, class TClassIfc, class... Args>
std::unique_ptr<TClassIfc> MakeFormatClass_Raw2Raw(PixelFormatId in, PixelFormatId out, Args&&... args) {
  constexpr auto hasCell = [](const FormatFacts&, const FormatFacts&) { return true; };
  const PixelFormatId rawIn = PixelFormatInfo_RawFormat(in);
  auto made = detail::MakeFromRawGrid<hasCell, T, TClassIfc>(rawIn, PixelFormatInfo_RawFormat(out),
                                                             std::forward<Args>(args)...);
  if (!made) {
    detail::ThrowUnsupportedFormat<TClassIfc, Args...>(rawIn, "MakeFormatClass_Raw2Raw", detail::kTwoIds,
                                                       detail::FormatPairClassName<T>::kName);
  }
  return made;
}

// As above, for two layouts with the same significant bits per channel.
template <template <PixelFormatId, PixelFormatId> class T, class TClassIfc, class... Args>
std::unique_ptr<TClassIfc> MakeFormatClass_Raw2Raw_SameBitDepth(PixelFormatId in, PixelFormatId out, Args&&... args) {
  constexpr auto hasCell = [](const FormatFacts& from, const FormatFacts& to) {
    return from.significantBits == to.significantBits;
  };
  const PixelFormatId rawIn = PixelFormatInfo_RawFormat(in);
  auto made = detail::MakeFromRawGrid<hasCell, T, TClassIfc>(rawIn, PixelFormatInfo_RawFormat(out),
                                                             std::forward<Args>(args)...);
  if (!made) {
    detail::ThrowUnsupportedFormat<TClassIfc, Args...>(rawIn, "MakeFormatClass_Raw2Raw_SameBitDepth", detail::kTwoIds,
                                                       detail::FormatPairClassName<T>::kName);
  }
  return made;
}

// Makes T<in, out> for an unpacked Bayer format and a colour format of its depth. A failure names the first id.
template <template <PixelFormatId, PixelFormatId> class T, class TClassIfc, class... Args>
std::unique_ptr<TClassIfc> MakeFormatClass_Bayer2Color(PixelFormatId in, PixelFormatId out, Args&&... args) {
  constexpr auto hasLine = [](const FormatFacts& from) { return from.IsBayered() && !from.IsPacked(); };
  constexpr auto hasCell = [](const FormatFacts& from, const FormatFacts& to) {
    return to.type == PixelType::Color && from.significantBits == to.significantBits;
  };
  auto made = detail::MakeFromPublicGrid<hasLine, hasCell, T, TClassIfc>(in, out, std::forward<Args>(args)...);
  if (!made) {
    detail::ThrowUnsupportedFormat<TClassIfc, Args...>(in, "MakeFormatClass_Bayer2Color", detail::kTwoIds,
                                                       detail::FormatPairClassName<T>::kName);
  }
  return made;
}

// Makes T<in, out> for a Bayer format and a mono format of the same layout: unpacked ones of one depth, and the two
// MIPI depths in all combinations. A failure names the first id.
template <template <PixelFormatId, PixelFormatId> class T, class TClassIfc, class... Args>
std::unique_ptr<TClassIfc> MakeFormatClass_Bayer2Mono(PixelFormatId in, PixelFormatId out, Args&&... args) {
  constexpr auto hasLine = [](const FormatFacts& from) {
    return from.IsBayered() && (from.layout == PixelLayout::Unpacked || from.layout == PixelLayout::Mipi);
  };
  constexpr auto hasCell = [](const FormatFacts& from, const FormatFacts& to) {
    return to.type == PixelType::Mono && from.layout == to.layout &&
           (from.layout == PixelLayout::Mipi || from.significantBits == to.significantBits);
  };
  auto made = detail::MakeFromPublicGrid<hasLine, hasCell, T, TClassIfc>(in, out, std::forward<Args>(args)...);
  if (!made) {
    detail::ThrowUnsupportedFormat<TClassIfc, Args...>(in, "MakeFormatClass_Bayer2Mono", detail::kTwoIds,
                                                       detail::FormatPairClassName<T>::kName);
  }
  return made;
}

}  // namespace img

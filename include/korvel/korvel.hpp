/// \file
/// libkorvel for C++17 and later: all of korvel.h, without a handle to look after. Nothing needs to be linked but the
/// library itself.
///
///     korvel::Image frame(korvel::PixelFormat::BayerRG12p, buffer, size, 1920, 1080);  // over the camera's memory
///     korvel::ImageConverter converter;
///     converter.SetMode(korvel::ConversionMode::HighQuality);
///     converter.Convert(frame, korvel::PixelFormat::RGB8).Write("frame.png");
///
/// Owners. Each kind of object has a class that owns its handle: it moves, doesn't copy, and ends the object when it
/// goes. One that was moved from, or made from nullptr, holds nothing; calls on it fail with InvalidHandle.
///
/// Failures, in two forms with the same classes and functions:
///
/// - `korvel::Image`, `korvel::Gain`, ... throw a korvel::Error, which has a code and a text. They have constructors.
/// - `korvel::nothrow::Image`, `korvel::nothrow::Gain`, ... throw nothing. What returns a T there returns a Result<T>,
///   which holds the T or the Error, and objects are made by static functions: `korvel::nothrow::Gain::Make()`. This
///   form also works in programs that are compiled without exceptions, where a failure of the other one aborts.
///
/// In this file `Returns<T>` stands for T in the first form, and for Result<T> in the second. Arguments may be objects
/// of either form, and an object passes from one to the other by a move: `korvel::nothrow::Video
/// quiet(std::move(video))`.
///
/// korvel.h is the reference: it tells what each function computes and when it fails. The rules about threads and about
/// memory of the caller's are those of the C functions. That an image is passed as const means that its handle stays;
/// where korvel.h says that a function changes its input's pixels, it does so here.
#ifndef KORVEL_KORVEL_HPP
#define KORVEL_KORVEL_HPP

#include <korvel/korvel.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace korvel {

// ---------------------------------------------------------------------------------------------------- small types --

/// A run of elements somewhere in memory, like the std::span of C++20.
template <class T>
class Span {
 public:
  constexpr Span() noexcept = default;
  /// size elements from data on.
  constexpr Span(T* data, size_t size) noexcept : data_(data), size_(size) {}
  /// A run of elements may be read as one of const elements.
  template <class U, class = std::enable_if_t<std::is_same_v<const U, T>>>
  constexpr Span(Span<U> other) noexcept : data_(other.data()), size_(other.size()) {}

  /// The first element.
  constexpr T* data() const noexcept { return data_; }
  /// Number of elements.
  constexpr size_t size() const noexcept { return size_; }
  /// Whether there are no elements.
  constexpr bool empty() const noexcept { return size_ == 0; }
  /// The first element.
  constexpr T* begin() const noexcept { return data_; }
  /// The end of the elements.
  constexpr T* end() const noexcept { return data_ + size_; }
  /// An element; index must be below size().
  constexpr T& operator[](size_t index) const noexcept { return data_[index]; }

 private:
  T* data_ = nullptr;
  size_t size_ = 0;
};

/// Version of the library that runs: 1.5.0 is 1, 5 and 0.
struct LibraryVersion {
  /// 1 of 1.5.0.
  uint32_t majorPart;
  /// 5 of 1.5.0.
  uint32_t minorPart;
  /// 0 of 1.5.0.
  uint32_t subminorPart;
};

/// The limits of a value, both included.
template <class T>
struct ValueRange {
  /// Least value.
  T min;
  /// Greatest value.
  T max;
};

/// The limits of an encoder's option, both included, and the step between its values.
template <class T>
struct OptionRange {
  /// Least value.
  T min;
  /// Greatest value.
  T max;
  /// Step between values.
  T increment;
};

/// Width and height of an image in pixels.
struct ImageSize {
  /// Pixels of a row.
  size_t width;
  /// Number of rows.
  size_t height;
};

/// A position in an image, with members x and y, from 0 at the top left.
using Point = KORVEL_POINT_2D;

/// How Bayer images become colour images; see KORVEL_CONVERSION_MODE.
enum class ConversionMode : uint32_t {
  Fast = KORVEL_CONVERSION_MODE_Fast,
  HighQuality = KORVEL_CONVERSION_MODE_HighQuality,
  Classic = KORVEL_CONVERSION_MODE_Classic
};

/// How a block of pixels becomes one; see KORVEL_BINNING_MODE.
enum class BinningMode : KORVEL_BINNING_MODE { Average = KORVEL_BINNING_MODE_Average, Sum = KORVEL_BINNING_MODE_Sum };

/// Angles of a rotation; Degree90 is counter-clockwise.
enum class RotationAngle : uint32_t {
  Degree90 = KORVEL_ROTATION_ANGLE_Degree90,
  Degree180 = KORVEL_ROTATION_ANGLE_Degree180,
  Degree270 = KORVEL_ROTATION_ANGLE_Degree270
};

/// Whether a line of pixels is a row (Horizontal) or a column (Vertical).
enum class LineOrientation : uint32_t {
  Horizontal = KORVEL_ORIENTATION_Horizontal,
  Vertical = KORVEL_ORIENTATION_Vertical
};

/// Order of the bytes in channels of more than 8 bits.
enum class ByteOrder : uint32_t { Little = KORVEL_ENDIANNESS_Little };

/// Containers of videos.
enum class VideoContainer : uint16_t { Avi = KORVEL_VIDEO_CONTAINER_AVI };

/// Encoders of videos; Mjpeg can be written.
enum class VideoEncoder : uint16_t { Avi = KORVEL_VIDEO_ENCODER_AVI, Mjpeg = KORVEL_VIDEO_ENCODER_MJPEG };

// ------------------------------------------------------------------------------------------------------- failures --

/// What a call ended with; see KORVEL_RETURN_CODE.
enum class ReturnCode : uint32_t {
  Success = KORVEL_RETURN_CODE_Success,
  Error = KORVEL_RETURN_CODE_Error,
  InvalidHandle = KORVEL_RETURN_CODE_InvalidHandle,
  Io = KORVEL_RETURN_CODE_Io,
  BufferToSmall = KORVEL_RETURN_CODE_BufferToSmall,
  InvalidArgument = KORVEL_RETURN_CODE_InvalidArgument,
  OutOfRange = KORVEL_RETURN_CODE_OutOfRange,
  ImageFormatNotSupported = KORVEL_RETURN_CODE_ImageFormatNotSupported,
  ImageFormatInterpretationError = KORVEL_RETURN_CODE_ImageFormatInterpretationError,
  NotSupported = KORVEL_RETURN_CODE_NotSupported,
  AccessFailed = KORVEL_RETURN_CODE_AccessFailed,
  QueueFull = KORVEL_RETURN_CODE_QueueFull,
  Timeout = KORVEL_RETURN_CODE_Timeout
};

/// The code's name, as "InvalidHandle"; "unknown" for numbers that are none.
constexpr const char* Name(ReturnCode code) noexcept {
  switch (code) {
    case ReturnCode::Success:
      return "Success";
    case ReturnCode::Error:
      return "Error";
    case ReturnCode::InvalidHandle:
      return "InvalidHandle";
    case ReturnCode::Io:
      return "Io";
    case ReturnCode::BufferToSmall:
      return "BufferToSmall";
    case ReturnCode::InvalidArgument:
      return "InvalidArgument";
    case ReturnCode::OutOfRange:
      return "OutOfRange";
    case ReturnCode::ImageFormatNotSupported:
      return "ImageFormatNotSupported";
    case ReturnCode::ImageFormatInterpretationError:
      return "ImageFormatInterpretationError";
    case ReturnCode::NotSupported:
      return "NotSupported";
    case ReturnCode::AccessFailed:
      return "AccessFailed";
    case ReturnCode::QueueFull:
      return "QueueFull";
    case ReturnCode::Timeout:
      return "Timeout";
  }
  return "unknown";
}

namespace detail {

// Whether there was memory for what body does.
template <class Body>
bool HasMemoryFor(Body&& body) {
#if defined(__cpp_exceptions)
  try {
    body();
  } catch (const std::bad_alloc&) {
    return false;
  }
#else
  body();
#endif
  return true;
}

}  // namespace detail

/// A failed call: thrown by the one form, returned by the other. Copying it takes no memory.
class Error : public std::exception {
 public:
  /// A failure with a text of its own; without one, or without memory for it, the text is the code's name.
  explicit Error(ReturnCode code, std::string_view text = {}) noexcept : code_(code) {
    if (text.empty()) return;
    detail::HasMemoryFor([&] { text_ = std::make_shared<const std::string>(text); });
  }

  /// The code that the call returned.
  ReturnCode Code() const noexcept { return code_; }

  /// The text that tells in words what went wrong.
  const char* what() const noexcept override { return text_ ? text_->c_str() : Name(code_); }

 private:
  ReturnCode code_;
  std::shared_ptr<const std::string> text_;
};

/// The last failure of a call in this thread, through whichever interface; Success before the first.
inline Error LastError() noexcept {
  uint32_t code = KORVEL_RETURN_CODE_Success;
  size_t size = 0;
  std::string text;
  KORVEL_Library_GetLastError(&code, nullptr, &size);
  if (!detail::HasMemoryFor([&] { text.resize(size); })) return Error(ReturnCode::Error);
  KORVEL_Library_GetLastError(&code, text.data(), &size);
  return Error(static_cast<ReturnCode>(code), text.c_str());
}

namespace detail {

[[noreturn]] inline void Throw([[maybe_unused]] const Error& error) {
#if defined(__cpp_exceptions)
  throw error;
#else
  std::abort();
#endif
}

// The failure of the call that just returned code. A few codes come without a text of their own in the record.
inline Error FailureOf(KORVEL_RETURN_CODE code) noexcept {
  const auto expected = static_cast<ReturnCode>(code);
  Error error = LastError();
  return error.Code() == expected ? error : Error(expected);
}

}  // namespace detail

/// A value, or the Error for which there is none. Reading a value that isn't there throws the Error.
template <class T>
class [[nodiscard]] Result {
 public:
  /// A success.
  Result(T value) noexcept : state_(std::move(value)) {}
  /// A failure.
  Result(Error error) noexcept : state_(std::move(error)) {}

  /// Whether there is a value. Mind that of a Result<bool> this isn't the value itself.
  bool HasValue() const noexcept { return state_.index() == 0; }
  /// Whether there is a value.
  explicit operator bool() const noexcept { return HasValue(); }

  /// The value.
  T& Value() & {
    Check();
    return *std::get_if<0>(&state_);
  }
  /// The value.
  const T& Value() const& {
    Check();
    return *std::get_if<0>(&state_);
  }
  /// The value, out of a Result that goes: by value, so that it may be used longer than that.
  T Value() && {
    Check();
    return std::move(*std::get_if<0>(&state_));
  }
  /// The value.
  T& operator*() & { return Value(); }
  /// The value.
  const T& operator*() const& { return Value(); }
  /// The value, out of a Result that goes.
  T operator*() && { return std::move(*this).Value(); }
  /// The value's members.
  T* operator->() { return &Value(); }
  /// The value's members.
  const T* operator->() const { return &Value(); }

  /// Success, or the failure's code.
  ReturnCode Code() const noexcept { return HasValue() ? ReturnCode::Success : std::get_if<1>(&state_)->Code(); }

  /// The failure; an Error with the code Success if there is none.
  Error Failure() const noexcept { return HasValue() ? Error(ReturnCode::Success) : *std::get_if<1>(&state_); }

 private:
  void Check() const {
    if (!HasValue()) detail::Throw(*std::get_if<1>(&state_));
  }

  std::variant<T, Error> state_;
};

/// A success without a value, or an Error.
template <>
class [[nodiscard]] Result<void> {
 public:
  /// A success.
  Result() noexcept : error_(ReturnCode::Success) {}
  /// A failure.
  Result(Error error) noexcept : error_(std::move(error)) {}

  /// Whether it is a success.
  bool HasValue() const noexcept { return error_.Code() == ReturnCode::Success; }
  /// Whether it is a success.
  explicit operator bool() const noexcept { return HasValue(); }

  /// Throws the Error if it is a failure.
  void Value() const {
    if (!HasValue()) detail::Throw(error_);
  }

  /// Success, or the failure's code.
  ReturnCode Code() const noexcept { return error_.Code(); }

  /// The failure; an Error with the code Success if there is none.
  Error Failure() const noexcept { return error_; }

 private:
  Error error_;
};

/// How korvel::Image and its like tell failures.
struct Throwing {
  /// What a call that tells a T returns: T itself, or a Result<T>.
  template <class T>
  using Returns = T;

  /// Throws the error.
  template <class T>
  static T Fail(const Error& error) {
    detail::Throw(error);
  }
};

/// How korvel::nothrow::Image and its like tell failures.
struct Returning {
  /// What a call that tells a T returns: T itself, or a Result<T>.
  template <class T>
  using Returns = Result<T>;

  /// A Result with the error.
  template <class T>
  static Result<T> Fail(Error error) noexcept {
    return error;
  }
};

namespace detail {

// Constructors can't return a failure, so only one form has them.
template <class Policy>
using IfThrowing = std::enable_if_t<std::is_same_v<Policy, Throwing>>;

template <class Policy, class T>
using ReturnOf = typename Policy::template Returns<T>;

template <class Policy>
ReturnOf<Policy, void> Finish(KORVEL_RETURN_CODE code) {
  if (code != KORVEL_RETURN_CODE_Success) return Policy::template Fail<void>(FailureOf(code));
  return ReturnOf<Policy, void>();
}

template <class Policy, class T>
ReturnOf<Policy, T> Finish(KORVEL_RETURN_CODE code, T value) {
  if (code != KORVEL_RETURN_CODE_Success) return Policy::template Fail<T>(FailureOf(code));
  return value;
}

template <class Policy, class T>
ReturnOf<Policy, T> OutOfMemory() {
  return Policy::template Fail<T>(Error(ReturnCode::Error, "There is no memory for the result."));
}

// A call that fills a Raw, which tells a T.
template <class Policy, class T, class Raw = T, class Function, class... Arguments>
ReturnOf<Policy, T> Ask(Function function, Arguments... arguments) {
  Raw value{};
  const KORVEL_RETURN_CODE code = function(arguments..., &value);
  return Finish<Policy, T>(code, static_cast<T>(value));
}

// A call that writes a handle for Object to own.
template <class Policy, class Object, class Function, class... Arguments>
ReturnOf<Policy, Object> Make(Function function, Arguments... arguments) {
  typename Object::HandleType handle = nullptr;
  const KORVEL_RETURN_CODE code = function(arguments..., &handle);
  return Finish<Policy, Object>(code, Object(handle));
}

// Two calls that tell the limits of a value.
template <class Policy, class T, class Handle>
ReturnOf<Policy, ValueRange<T>> AskRange(KORVEL_RETURN_CODE (*askMin)(Handle, T*),
                                         KORVEL_RETURN_CODE (*askMax)(Handle, T*), Handle handle) {
  ValueRange<T> range{};
  KORVEL_RETURN_CODE code = askMin(handle, &range.min);
  if (code == KORVEL_RETURN_CODE_Success) code = askMax(handle, &range.max);
  return Finish<Policy, ValueRange<T>>(code, range);
}

// fill(array, &size) is a call that tells the size for a null array, and fills the array otherwise.
template <class Policy, class T, class Raw = T, class Fill>
ReturnOf<Policy, std::vector<T>> List(Fill fill) {
  size_t size = 0;
  KORVEL_RETURN_CODE code = fill(nullptr, &size);
  std::vector<Raw> values;
  if (code == KORVEL_RETURN_CODE_Success) {
    if (!HasMemoryFor([&] { values.resize(size); })) return OutOfMemory<Policy, std::vector<T>>();
    code = fill(values.data(), &size);
  }
  if constexpr (std::is_same_v<T, Raw>) {
    return Finish<Policy, std::vector<T>>(code, std::move(values));
  } else {
    std::vector<T> translated;
    if (!HasMemoryFor([&] { translated.reserve(values.size()); })) return OutOfMemory<Policy, std::vector<T>>();
    for (const Raw value : values) translated.push_back(static_cast<T>(value));
    return Finish<Policy, std::vector<T>>(code, std::move(translated));
  }
}

}  // namespace detail

/// Owns the handle of an object of the library; the classes below are made from it. As the type of an argument it takes
/// objects of both forms.
template <class Handle, void (*kEnd)(Handle)>
class Owner {
 public:
  /// Type of the C handle.
  using HandleType = Handle;

  /// Takes over a handle that a C function gave; null holds nothing.
  explicit Owner(Handle handle) noexcept : handle_(handle) {}
  /// Takes the object of another owner, which then holds nothing.
  Owner(Owner&& other) noexcept : handle_(other.Release()) {}
  /// Takes the object of another owner, which then holds nothing, and ends its own.
  Owner& operator=(Owner&& other) noexcept {
    if (this != &other) {
      Reset();
      handle_ = other.Release();
    }
    return *this;
  }
  Owner(const Owner&) = delete;
  Owner& operator=(const Owner&) = delete;
  ~Owner() { Reset(); }

  /// Whether there is an object.
  explicit operator bool() const noexcept { return handle_ != nullptr; }

  /// The handle, for C functions; null if there is no object. It stays this object's.
  Handle Get() const noexcept { return handle_; }

  /// Hands the handle over to the caller, and holds nothing from then on.
  Handle Release() noexcept { return std::exchange(handle_, nullptr); }

  /// Ends the object, if there is one, and holds nothing from then on.
  void Reset() noexcept {
    if (handle_ != nullptr) kEnd(Release());
  }

 private:
  Handle handle_;
};

namespace detail {

// A destructor has nobody to tell a failure to, and the handle, which is all that could be wrong, is known to be good.
template <class Handle, KORVEL_RETURN_CODE (*kDestruct)(Handle)>
void End(Handle handle) {
  kDestruct(handle);
}

// If the end of the file can't be written, the handle stays for questions, and a second call ends it.
inline void EndVideo(KORVEL_VIDEO_HANDLE handle) {
  if (KORVEL_VideoWriter_Video_Close(handle) != KORVEL_RETURN_CODE_Success) KORVEL_VideoWriter_Video_Close(handle);
}

template <class Handle, KORVEL_RETURN_CODE (*kDestruct)(Handle)>
using OwnerOf = Owner<Handle, &End<Handle, kDestruct>>;

}  // namespace detail

/// An image of either form, as an argument.
using AnyImage = detail::OwnerOf<KORVEL_IMAGE_HANDLE, KORVEL_Image_Destruct>;
/// A converter of either form.
using AnyImageConverter = detail::OwnerOf<KORVEL_IMAGE_CONVERTER_HANDLE, KORVEL_ImageConverter_Destruct>;
/// A gain of either form.
using AnyGain = detail::OwnerOf<KORVEL_GAIN_HANDLE, KORVEL_Gain_Destruct>;
/// A gamma corrector of either form.
using AnyGammaCorrector = detail::OwnerOf<KORVEL_GAMMA_CORRECTOR_HANDLE, KORVEL_GammaCorrector_Destruct>;
/// A colour corrector of either form.
using AnyColorCorrector = detail::OwnerOf<KORVEL_COLOR_CORRECTOR_HANDLE, KORVEL_ColorCorrector_Destruct>;
/// A binning of either form.
using AnyBinning = detail::OwnerOf<KORVEL_BINNING_HANDLE, KORVEL_Binning_Destruct>;
/// A hot pixel corrector of either form.
using AnyAdaptiveHotpixelCorrector =
    detail::OwnerOf<KORVEL_ADAPTIVE_HOTPIXEL_CORRECTOR_HANDLE, KORVEL_AdaptiveHotpixelCorrector_Destruct>;
/// A transformer of either form.
using AnyImageTransformer = detail::OwnerOf<KORVEL_IMAGE_TRANSFORMER_HANDLE, KORVEL_ImageTransformer_Destruct>;
/// A histogram of either form.
using AnyHistogram = detail::OwnerOf<KORVEL_HISTOGRAM_HANDLE, KORVEL_Histogram_Destruct>;
/// A pixel line of either form.
using AnyPixelLine = detail::OwnerOf<KORVEL_PIXEL_LINE_HANDLE, KORVEL_PixelLine_Destruct>;
/// A video of either form.
using AnyVideo = Owner<KORVEL_VIDEO_HANDLE, &detail::EndVideo>;

// -------------------------------------------------------------------------------------------------- pixel formats --

/// One enumerator of PixelFormat; gone behind it.
#define KORVEL_DETAIL_ENUMERATOR(name, id) name = id,
/// The pixel formats, by the names and ids of korvel.h. Invalid is no format.
enum class PixelFormat : uint32_t { KORVEL_PIXEL_FORMATS(KORVEL_DETAIL_ENUMERATOR) Invalid = 0 };
#undef KORVEL_DETAIL_ENUMERATOR

/// The family of a pixel format, without its depth.
enum class PixelClass {
  Mono,
  BayerGR,
  BayerRG,
  BayerGB,
  BayerBG,
  MonoPacked,
  BayerGRPacked,
  BayerRGPacked,
  BayerGBPacked,
  BayerBGPacked,
  RGB,
  BGR,
  RGBa,
  BGRa,
  RGB10p32,
  BGR10p32
};

/// How channels lie in memory; see KORVEL_PIXEL_FORMAT_TABLE.
enum class PixelLayout { Unpacked, NoAlignment, Mipi, Word32 };

/// What is known of a pixel format when a program is compiled.
struct PixelFormatFacts {
  /// The id.
  PixelFormat format;
  /// The name, as in korvel.h.
  std::string_view name;
  /// The family.
  PixelClass pixelClass;
  /// How channels lie in memory.
  PixelLayout layout;
  /// Bits of a channel that carry its value: 8, 10 or 12.
  unsigned significantBits;

  /// Channels of a pixel: 1, 3 or 4.
  constexpr unsigned Channels() const noexcept {
    switch (pixelClass) {
      case PixelClass::RGBa:
      case PixelClass::BGRa:
        return 4;
      case PixelClass::RGB:
      case PixelClass::BGR:
      case PixelClass::RGB10p32:
      case PixelClass::BGR10p32:
        return 3;
      default:
        return 1;
    }
  }
  /// Greatest value of a channel.
  constexpr unsigned MaximumValue() const noexcept { return (1u << significantBits) - 1; }
  /// Whether channels share bytes, or lie in one word.
  constexpr bool IsPacked() const noexcept { return layout != PixelLayout::Unpacked; }
  /// Whether a pixel has one colour, by its position.
  constexpr bool IsBayer() const noexcept {
    return Channels() == 1 && pixelClass != PixelClass::Mono && pixelClass != PixelClass::MonoPacked;
  }
  /// Whether a pixel has all colours.
  constexpr bool IsColor() const noexcept { return Channels() > 1; }
  /// Bytes of a sample in a view: 1 or 2 where each channel is one, 4 for a word of three channels. 0 for streams of
  /// bits, of which there is no view.
  constexpr size_t SampleBytes() const noexcept {
    switch (layout) {
      case PixelLayout::Unpacked:
        return significantBits == 8 ? 1 : 2;
      case PixelLayout::Word32:
        return 4;
      default:
        return 0;
    }
  }
  /// Samples of a pixel in a view: its channels, or one word.
  constexpr size_t SamplesPerPixel() const noexcept { return layout == PixelLayout::Word32 ? 1 : Channels(); }
  /// Bits of memory that a pixel takes.
  constexpr size_t BitsPerPixel() const noexcept {
    return SampleBytes() == 0 ? significantBits : 8 * SampleBytes() * SamplesPerPixel();
  }
};

/// One element of kPixelFormats; gone behind it.
#define KORVEL_DETAIL_FACTS(X, name, id, pixelClass, layout, significantBits) \
  {PixelFormat::name, #name, PixelClass::pixelClass, PixelLayout::layout, significantBits},
/// All pixel formats, in order of their ids.
inline constexpr PixelFormatFacts kPixelFormats[] = {KORVEL_PIXEL_FORMAT_TABLE(KORVEL_DETAIL_FACTS, )};
#undef KORVEL_DETAIL_FACTS

/// The facts of a format, null for Invalid and for numbers that are none.
constexpr const PixelFormatFacts* FindPixelFormat(PixelFormat format) noexcept {
  for (const PixelFormatFacts& facts : kPixelFormats) {
    if (facts.format == format) return &facts;
  }
  return nullptr;
}

/// The facts of the format that is called name, as "BayerRG12p"; null if none is.
constexpr const PixelFormatFacts* FindPixelFormat(std::string_view name) noexcept {
  for (const PixelFormatFacts& facts : kPixelFormats) {
    if (facts.name == name) return &facts;
  }
  return nullptr;
}

/// The format's name, as "BayerRG12p"; "Invalid" for Invalid and for numbers that are none.
constexpr std::string_view Name(PixelFormat format) noexcept {
  const PixelFormatFacts* const facts = FindPixelFormat(format);
  return facts != nullptr ? facts->name : std::string_view("Invalid");
}

/// Type of the samples in a view of a format: uint8_t, uint16_t, or uint32_t for a word of three channels.
template <PixelFormat kFormat>
using SampleOf =
    std::conditional_t<FindPixelFormat(kFormat)->SampleBytes() == 1, uint8_t,
                       std::conditional_t<FindPixelFormat(kFormat)->SampleBytes() == 2, uint16_t, uint32_t>>;

/// The library's own answers about formats; each takes also the ids that it answers for beside the public ones.
template <class Policy>
class BasicFormatQueries {
 public:
  /// What a call that tells a T returns: T itself, or a Result<T>.
  template <class T>
  using Returns = typename Policy::template Returns<T>;

  /// Channels of a pixel.
  static Returns<size_t> NumChannels(PixelFormat format) {
    return detail::Ask<Policy, size_t>(KORVEL_PixelFormat_GetNumChannels, static_cast<uint32_t>(format));
  }
  /// Bits of a channel that carry its value.
  static Returns<size_t> SignificantBitsPerChannel(PixelFormat format) {
    return detail::Ask<Policy, size_t>(KORVEL_PixelFormat_GetNumSignificantBitsPerChannel,
                                       static_cast<uint32_t>(format));
  }
  /// Bits of memory that a channel takes.
  static Returns<size_t> StorageBitsPerChannel(PixelFormat format) {
    return detail::Ask<Policy, size_t>(KORVEL_PixelFormat_GetNumStorageBitsPerChannel, static_cast<uint32_t>(format));
  }
  /// Greatest value of a channel.
  static Returns<uint32_t> MaximumValuePerChannel(PixelFormat format) {
    return detail::Ask<Policy, uint32_t>(KORVEL_PixelFormat_GetMaximumValuePerChannel, static_cast<uint32_t>(format));
  }
  /// Bits of a pixel that carry values.
  static Returns<size_t> SignificantBitsPerPixel(PixelFormat format) {
    return detail::Ask<Policy, size_t>(KORVEL_PixelFormat_GetNumSignificantBitsPerPixel, static_cast<uint32_t>(format));
  }
  /// Bits of memory that a pixel takes.
  static Returns<size_t> StorageBitsPerPixel(PixelFormat format) {
    return detail::Ask<Policy, size_t>(KORVEL_PixelFormat_GetNumStorageBitsPerPixel, static_cast<uint32_t>(format));
  }
  /// Order of the bytes in channels of more than 8 bits.
  static Returns<ByteOrder> Endianness(PixelFormat format) {
    return detail::Ask<Policy, ByteOrder, KORVEL_ENDIANNESS>(KORVEL_PixelFormat_GetEndianness,
                                                             static_cast<uint32_t>(format));
  }
  /// Bytes of a run of pixels, such as width * height of an image.
  static Returns<size_t> StorageSizeOfPixels(PixelFormat format, size_t numPixels) {
    return detail::Ask<Policy, size_t>(KORVEL_PixelFormat_CalculateStorageSizeOfPixels, static_cast<uint32_t>(format),
                                       numPixels);
  }
};

/// What the library tells of itself.
template <class Policy>
class BasicLibrary {
 public:
  /// What a call that tells a T returns: T itself, or a Result<T>.
  template <class T>
  using Returns = typename Policy::template Returns<T>;

  /// The version that runs.
  static Returns<LibraryVersion> Version() {
    LibraryVersion version{};
    KORVEL_RETURN_CODE code = KORVEL_Library_GetVersionMajor(&version.majorPart);
    if (code == KORVEL_RETURN_CODE_Success) code = KORVEL_Library_GetVersionMinor(&version.minorPart);
    if (code == KORVEL_RETURN_CODE_Success) code = KORVEL_Library_GetVersionSubminor(&version.subminorPart);
    return detail::Finish<Policy, LibraryVersion>(code, version);
  }
};

// ---------------------------------------------------------------------------------------- buffers of other layouts --

/// Layouts of GigE Vision 1.x cameras: two pixels in three bytes, the high bits of both in the outer bytes and their
/// low bits in the middle one. The library has no format for them; see BasicImage::CopyLegacyPacked.
enum class LegacyPixelFormat : uint32_t {
  Mono10Packed = 0x010C0004,
  Mono12Packed = 0x010C0006,
  BayerGR10Packed = 0x010C0026,
  BayerRG10Packed = 0x010C0027,
  BayerGB10Packed = 0x010C0028,
  BayerBG10Packed = 0x010C0029,
  BayerGR12Packed = 0x010C002A,
  BayerRG12Packed = 0x010C002B,
  BayerGB12Packed = 0x010C002C,
  BayerBG12Packed = 0x010C002D
};

namespace detail {

// What an older layout becomes: a packed format where groups are whole, an unpacked one otherwise.
struct LegacyTarget {
  LegacyPixelFormat source;
  PixelFormat packed;
  PixelFormat unpacked;
};

inline constexpr LegacyTarget kLegacyTargets[] = {
    {LegacyPixelFormat::Mono10Packed, PixelFormat::Mono10g40Qrv, PixelFormat::Mono10},
    {LegacyPixelFormat::Mono12Packed, PixelFormat::Mono12g24Qrv, PixelFormat::Mono12},
    {LegacyPixelFormat::BayerGR10Packed, PixelFormat::BayerGR10g40Qrv, PixelFormat::BayerGR10},
    {LegacyPixelFormat::BayerRG10Packed, PixelFormat::BayerRG10g40Qrv, PixelFormat::BayerRG10},
    {LegacyPixelFormat::BayerGB10Packed, PixelFormat::BayerGB10g40Qrv, PixelFormat::BayerGB10},
    {LegacyPixelFormat::BayerBG10Packed, PixelFormat::BayerBG10g40Qrv, PixelFormat::BayerBG10},
    {LegacyPixelFormat::BayerGR12Packed, PixelFormat::BayerGR12g24Qrv, PixelFormat::BayerGR12},
    {LegacyPixelFormat::BayerRG12Packed, PixelFormat::BayerRG12g24Qrv, PixelFormat::BayerRG12},
    {LegacyPixelFormat::BayerGB12Packed, PixelFormat::BayerGB12g24Qrv, PixelFormat::BayerGB12},
    {LegacyPixelFormat::BayerBG12Packed, PixelFormat::BayerBG12g24Qrv, PixelFormat::BayerBG12},
};

// Pixels of a group that is complete in bytes of its own, in the library's formats of the MIPI layout.
constexpr size_t MipiGroup(unsigned significantBits) { return significantBits == 10 ? 4 : 2; }

// The least product of width and height that doesn't fit stands for all that don't.
constexpr size_t PixelCount(size_t width, size_t height) {
  constexpr size_t kMost = std::numeric_limits<size_t>::max();
  return height != 0 && width > kMost / height ? kMost : width * height;
}

// Two pixels of an older layout in three bytes become two of the 12g24 layout: the middle byte goes last.
inline void RearrangeTo12g24(const uint8_t* input, size_t pixels, uint8_t* output) {
  for (size_t i = 0; i < pixels / 2; ++i, input += 3, output += 3) {
    const uint8_t low = input[1];
    output[0] = input[0];
    output[1] = input[2];
    output[2] = low;
  }
}

// Four pixels in six bytes become four of the 10g40 layout, in five.
inline void RearrangeTo10g40(const uint8_t* input, size_t pixels, uint8_t* output) {
  for (size_t i = 0; i < pixels / 4; ++i, input += 6, output += 5) {
    const unsigned firstPair = (input[1] & 3u) | (input[1] & 0x30u) >> 2;
    const unsigned secondPair = (input[4] & 3u) | (input[4] & 0x30u) >> 2;
    output[0] = input[0];
    output[1] = input[2];
    output[2] = input[3];
    output[3] = input[5];
    output[4] = static_cast<uint8_t>(firstPair | secondPair << 4);
  }
}

// Each pixel becomes a little-endian word. bits is 10 or 12.
inline void UnpackLegacy(const uint8_t* input, size_t pixels, unsigned bits, uint8_t* output) {
  const unsigned lowBits = bits - 8;
  const unsigned lowMask = (1u << lowBits) - 1;
  for (size_t i = 0; i < pixels; ++i, output += 2) {
    const uint8_t* const group = input + i / 2 * 3;
    const unsigned high = i % 2 == 0 ? group[0] : group[2];
    const unsigned low = i % 2 == 0 ? group[1] : unsigned{group[1]} >> 4;
    const unsigned value = high << lowBits | (low & lowMask);
    output[0] = static_cast<uint8_t>(value);
    output[1] = static_cast<uint8_t>(value >> 8);
  }
}

// Writes the first bitCount bits of line, of which there is at least one, behind the first bitPosition bits of stream.
// Both are little-endian streams.
inline void AppendBits(const uint8_t* line, size_t bitCount, uint8_t* stream, size_t bitPosition) {
  const size_t shift = bitPosition % 8;
  stream += bitPosition / 8;
  unsigned bits = *stream & ((1u << shift) - 1);
  for (; bitCount >= 8; bitCount -= 8) {
    bits |= unsigned{*line++} << shift;
    *stream++ = static_cast<uint8_t>(bits);
    bits >>= 8;
  }
  if (bitCount != 0) bits |= (*line & ((1u << bitCount) - 1)) << shift;
  if (shift + bitCount > 0) *stream++ = static_cast<uint8_t>(bits);
  if (shift + bitCount > 8) *stream = static_cast<uint8_t>(bits >> 8);
}

// Copies lines that lie stride bytes apart so that they follow each other without padding.
inline void CopyLines(const uint8_t* input, size_t stride, size_t bitsPerLine, size_t height, uint8_t* output) {
  for (size_t y = 0; y < height; ++y) {
    if (bitsPerLine % 8 == 0) {
      std::memcpy(output + y * (bitsPerLine / 8), input + y * stride, bitsPerLine / 8);
    } else {
      AppendBits(input + y * stride, bitsPerLine, output, y * bitsPerLine);
    }
  }
}

}  // namespace detail

/// The pixel format that BasicImage::CopyLegacyPacked gives an image of width by height pixels; Invalid for a format
/// that is none.
///
/// `...12Packed` becomes `...12g24Qrv` if the image has an even number of pixels, and `...10Packed` becomes
/// `...10g40Qrv` if it is a multiple of 4: the same bits in another order. With any other number of pixels the last
/// group would be incomplete, and would lose the low bits of its pixels. The image is then unpacked to `...12` and
/// `...10`, with a 16-bit word for each pixel. Both ways keep each value.
constexpr PixelFormat TargetFormat(LegacyPixelFormat format, size_t width, size_t height) noexcept {
  for (const detail::LegacyTarget& target : detail::kLegacyTargets) {
    if (target.source != format) continue;
    const size_t group = detail::MipiGroup(FindPixelFormat(target.unpacked)->significantBits);
    return detail::PixelCount(width, height) % group == 0 ? target.packed : target.unpacked;
  }
  return PixelFormat::Invalid;
}

/// Bytes that an image of an older layout takes: three for two pixels, and two for a last one alone. The largest size_t
/// if they can't be counted.
constexpr size_t LegacyByteCount(size_t width, size_t height) noexcept {
  constexpr size_t kMost = std::numeric_limits<size_t>::max();
  const size_t pixels = detail::PixelCount(width, height);
  return pixels > kMost / 3 ? kMost : pixels / 2 * 3 + pixels % 2 * 2;
}

// ---------------------------------------------------------------------------------------------------------- views --

namespace detail {

// Goes over the rows of a view, none of which is empty.
template <class Sample>
class RowIterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = Span<Sample>;
  using difference_type = std::ptrdiff_t;
  using pointer = void;
  using reference = Span<Sample>;

  RowIterator(Sample* row, size_t samples) noexcept : row_(row), samples_(samples) {}
  Span<Sample> operator*() const noexcept { return {row_, samples_}; }
  RowIterator& operator++() noexcept {
    row_ += samples_;
    return *this;
  }
  RowIterator operator++(int) noexcept {
    const RowIterator before = *this;
    row_ += samples_;
    return before;
  }
  bool operator==(const RowIterator& other) const noexcept { return row_ == other.row_; }
  bool operator!=(const RowIterator& other) const noexcept { return row_ != other.row_; }

 private:
  Sample* row_;
  size_t samples_;
};

}  // namespace detail

/// The pixels of an image as samples in memory: each channel one uint8_t or uint16_t, or a word of three channels one
/// uint32_t (RGB10p32, BGR10p32). BasicImage::Pixels makes it. It owns nothing, and is valid as long as the image has
/// its size, format and memory. Positions must lie inside the image; they aren't checked.
///
///     auto pixels = image.Pixels<uint16_t>();
///     for (auto row : pixels) for (uint16_t& sample : row) sample /= 2;
///     uint16_t blue = pixels(x, y, 2);
template <class Sample>
class PixelView {
 public:
  /// A view of width by height pixels of samplesPerPixel samples each, without gaps, at data.
  PixelView(Sample* data, PixelFormat format, size_t width, size_t height, size_t samplesPerPixel) noexcept
      : data_(data), format_(format), width_(width), height_(height), samplesPerPixel_(samplesPerPixel) {}

  /// The image's format.
  PixelFormat Format() const noexcept { return format_; }
  /// Pixels of a row.
  size_t Width() const noexcept { return width_; }
  /// Number of rows.
  size_t Height() const noexcept { return height_; }
  /// Samples of a pixel: its channels, in the order of the format's name, or 1 for a word of three channels.
  size_t Channels() const noexcept { return samplesPerPixel_; }

  /// One sample: column x, row y.
  Sample& operator()(size_t x, size_t y, size_t channel = 0) const noexcept {
    return data_[(y * width_ + x) * samplesPerPixel_ + channel];
  }
  /// The samples of one pixel.
  Span<Sample> Pixel(size_t x, size_t y) const noexcept { return {&(*this)(x, y), samplesPerPixel_}; }
  /// The samples of row y, pixel by pixel.
  Span<Sample> Row(size_t y) const noexcept {
    return {data_ + y * width_ * samplesPerPixel_, width_ * samplesPerPixel_};
  }
  /// All samples, row by row.
  Span<Sample> Samples() const noexcept { return {data_, height_ * width_ * samplesPerPixel_}; }

  /// The rows, from the top.
  detail::RowIterator<Sample> begin() const noexcept { return {data_, width_ * samplesPerPixel_}; }
  /// The end of the rows.
  detail::RowIterator<Sample> end() const noexcept { return {data_ + Samples().size(), width_ * samplesPerPixel_}; }

 private:
  Sample* data_;
  PixelFormat format_;
  size_t width_;
  size_t height_;
  size_t samplesPerPixel_;
};

namespace detail {

struct ImageMemory {
  uint32_t format = KORVEL_PIXEL_FORMAT_Invalid;
  size_t width = 0;
  size_t height = 0;
  uint8_t* data = nullptr;
  const PixelFormatFacts* facts = nullptr;  // null for an image without meaning
};

inline KORVEL_RETURN_CODE Look(KORVEL_IMAGE_HANDLE image, ImageMemory& memory) {
  KORVEL_RETURN_CODE code = KORVEL_Image_GetPixelFormat(image, &memory.format);
  if (code == KORVEL_RETURN_CODE_Success) code = KORVEL_Image_GetWidth(image, &memory.width);
  if (code == KORVEL_RETURN_CODE_Success) code = KORVEL_Image_GetHeight(image, &memory.height);
  if (code == KORVEL_RETURN_CODE_Success) code = KORVEL_Image_GetData(image, &memory.data);
  if (code == KORVEL_RETURN_CODE_Success) memory.facts = FindPixelFormat(static_cast<PixelFormat>(memory.format));
  return code;
}

template <class Policy, class Sample>
ReturnOf<Policy, PixelView<Sample>> ViewOf(const ImageMemory& memory) {
  using View = PixelView<Sample>;
  if (memory.facts == nullptr || memory.facts->SampleBytes() != sizeof(Sample)) {
    return Policy::template Fail<View>(
        Error(ReturnCode::ImageFormatNotSupported, "The pixels of the image are no samples of this type."));
  }
  if (reinterpret_cast<uintptr_t>(memory.data) % alignof(Sample) != 0) {
    return Policy::template Fail<View>(
        Error(ReturnCode::InvalidArgument, "The memory of the image is not aligned for samples of this type."));
  }
  return View(reinterpret_cast<Sample*>(memory.data), static_cast<PixelFormat>(memory.format), memory.width,
              memory.height, memory.facts->SamplesPerPixel());
}

}  // namespace detail

// --------------------------------------------------------------------------------------------------------- images --

/// An image.
template <class Policy>
class BasicImage : public AnyImage {
 public:
  /// What a call that tells a T returns: T itself, or a Result<T>.
  template <class T>
  using Returns = typename Policy::template Returns<T>;

  using AnyImage::AnyImage;
  /// Takes over an image of the other form.
  explicit BasicImage(AnyImage&& other) noexcept : AnyImage(std::move(other)) {}

  /// Like Make.
  template <class P = Policy, class = detail::IfThrowing<P>>
  BasicImage(PixelFormat format, size_t width, size_t height) : BasicImage(Make(format, width, height)) {}

  /// Like FromBuffer.
  template <class P = Policy, class = detail::IfThrowing<P>>
  BasicImage(PixelFormat format, uint8_t* buffer, size_t bufferSize, size_t width, size_t height)
      : BasicImage(FromBuffer(format, buffer, bufferSize, width, height)) {}

  /// An image in memory of the library's own, all zero.
  static Returns<BasicImage> Make(PixelFormat format, size_t width, size_t height) {
    return detail::Make<Policy, BasicImage>(KORVEL_Image_Construct, static_cast<uint32_t>(format), width, height);
  }

  /// An image over the caller's memory, which must outlive it; nothing is copied. Lines follow each other without
  /// padding: for others see CopyPaddedLines.
  static Returns<BasicImage> FromBuffer(PixelFormat format, uint8_t* buffer, size_t bufferSize, size_t width,
                                        size_t height) {
    return detail::Make<Policy, BasicImage>(KORVEL_Image_ConstructFromBuffer, static_cast<uint32_t>(format), buffer,
                                            bufferSize, width, height);
  }

  /// An image with a copy of pixels whose lines begin stride bytes apart; see AssignPaddedLines.
  static Returns<BasicImage> CopyPaddedLines(PixelFormat format, const uint8_t* buffer, size_t bufferSize, size_t width,
                                             size_t height, size_t stride) {
    KORVEL_IMAGE_HANDLE handle = nullptr;
    const KORVEL_RETURN_CODE code = KORVEL_Image_Construct(static_cast<uint32_t>(format), width, height, &handle);
    BasicImage image(handle);
    if (code == KORVEL_RETURN_CODE_Success) {
      const Result<void> taken = image.TakePaddedLines(buffer, bufferSize, stride);
      if (!taken) return Policy::template Fail<BasicImage>(taken.Failure());
    }
    return detail::Finish<Policy, BasicImage>(code, std::move(image));
  }

  /// An image with the pixels of a buffer in an older layout of GigE Vision cameras, in the format that TargetFormat
  /// tells: rearranged where that is exact, otherwise unpacked. See AssignLegacyPacked.
  static Returns<BasicImage> CopyLegacyPacked(LegacyPixelFormat format, const uint8_t* buffer, size_t bufferSize,
                                              size_t width, size_t height) {
    const PixelFormat target = TargetFormat(format, width, height);
    if (target == PixelFormat::Invalid) {
      return Policy::template Fail<BasicImage>(Error(ReturnCode::InvalidArgument, "No older layout has this id."));
    }
    KORVEL_IMAGE_HANDLE handle = nullptr;
    const KORVEL_RETURN_CODE code = KORVEL_Image_Construct(static_cast<uint32_t>(target), width, height, &handle);
    BasicImage image(handle);
    if (code == KORVEL_RETURN_CODE_Success) {
      const Result<void> taken = image.TakeLegacyPacked(format, buffer, bufferSize);
      if (!taken) return Policy::template Fail<BasicImage>(taken.Failure());
    }
    return detail::Finish<Policy, BasicImage>(code, std::move(image));
  }

  /// Reads a file; its ending tells the type.
  static Returns<BasicImage> Read(std::string_view path) {
    return detail::Make<Policy, BasicImage>(KORVEL_ImageReader_Read, path.data(), path.size());
  }
  /// Reads a file whose pixels are taken for a format; see KORVEL_ImageReaderRead_ReadAsPixelFormat().
  static Returns<BasicImage> ReadAs(std::string_view path, PixelFormat format) {
    return detail::Make<Policy, BasicImage>(KORVEL_ImageReaderRead_ReadAsPixelFormat, path.data(), path.size(),
                                            static_cast<uint32_t>(format));
  }

  /// Width in pixels.
  Returns<size_t> Width() const { return detail::Ask<Policy, size_t>(KORVEL_Image_GetWidth, Get()); }
  /// Height in pixels.
  Returns<size_t> Height() const { return detail::Ask<Policy, size_t>(KORVEL_Image_GetHeight, Get()); }
  /// Bytes of all pixels.
  Returns<size_t> ByteCount() const { return detail::Ask<Policy, size_t>(KORVEL_Image_GetByteCount, Get()); }
  /// The pixel format, which mirroring and rotation in place may change.
  Returns<PixelFormat> Format() const {
    return detail::Ask<Policy, PixelFormat, uint32_t>(KORVEL_Image_GetPixelFormat, Get());
  }

  /// First byte of the pixels, null for an image without data.
  Returns<uint8_t*> Data() { return detail::Ask<Policy, uint8_t*>(KORVEL_Image_GetData, Get()); }
  /// First byte of the pixels of a const image.
  Returns<const uint8_t*> Data() const {
    return detail::Ask<Policy, const uint8_t*, uint8_t*>(KORVEL_Image_GetData, Get());
  }

  /// Address of the pixel at column x and row y; see KORVEL_Image_GetPixelPointer() about packed formats.
  Returns<uint8_t*> PixelPointer(size_t x, size_t y) {
    return detail::Ask<Policy, uint8_t*>(KORVEL_Image_GetPixelPointer, Get(), x, y);
  }
  /// Address of a pixel of a const image.
  Returns<const uint8_t*> PixelPointer(size_t x, size_t y) const {
    return detail::Ask<Policy, const uint8_t*, uint8_t*>(KORVEL_Image_GetPixelPointer, Get(), x, y);
  }

  /// A view of the pixels. Sample is uint8_t for formats of 8 bits, uint16_t for unpacked ones of 10 and 12 bits, and
  /// uint32_t for RGB10p32 and BGR10p32.
  ///
  /// @retval ImageFormatNotSupported  the format's samples are not of this type, as in all streams of bits
  /// @retval InvalidArgument          the image's memory, which is then the caller's, isn't aligned for them; that
  ///                                  of a Clone is
  template <class Sample>
  Returns<PixelView<Sample>> Pixels() {
    return MakeView<Sample>();
  }
  /// A view of the pixels of a const image.
  template <class Sample>
  Returns<PixelView<const Sample>> Pixels() const {
    return MakeView<const Sample>();
  }

  /// Calls visitor with the view of the pixels that fits the format: PixelView<uint8_t>, PixelView<uint16_t> or
  /// PixelView<uint32_t>. It must return the same type T for each; the answer is a Returns<T>.
  ///
  ///     image.Visit([](auto pixels) { return pixels(0, 0) == 0; });
  ///
  /// Fails as Pixels does, without a call of visitor.
  template <class Visitor>
  auto Visit(Visitor&& visitor) {
    return VisitViews<uint8_t, uint16_t, uint32_t>(visitor);
  }
  /// Calls visitor with a view of const samples.
  template <class Visitor>
  auto Visit(Visitor&& visitor) const {
    return VisitViews<const uint8_t, const uint16_t, const uint32_t>(visitor);
  }

  /// Copies pixels whose lines begin stride bytes apart into this image, of the same format and size, whose lines have
  /// no padding. A line begins on a whole byte and has at most stride bytes.
  ///
  /// @retval InvalidArgument  buffer is null or, with bufferSize bytes, too small; stride is below the bytes of a line;
  ///                          or the format is `10g40` or `12g24`, and a line is no whole number of their groups of 4
  ///                          or 2 pixels; or the image has no pixels with a meaning
  Returns<void> AssignPaddedLines(const uint8_t* buffer, size_t bufferSize, size_t stride) {
    const Result<void> taken = TakePaddedLines(buffer, bufferSize, stride);
    return taken ? Returns<void>() : Policy::template Fail<void>(taken.Failure());
  }

  /// Copies pixels in an older layout of GigE Vision cameras, without padding, into this image, of the same size and of
  /// the format that TargetFormat tells; for loops over frames.
  ///
  /// @retval InvalidArgument  buffer is null or, with bufferSize bytes, below LegacyByteCount; or the image has another
  ///                          format
  Returns<void> AssignLegacyPacked(LegacyPixelFormat format, const uint8_t* buffer, size_t bufferSize) {
    const Result<void> taken = TakeLegacyPacked(format, buffer, bufferSize);
    return taken ? Returns<void>() : Policy::template Fail<void>(taken.Failure());
  }

  /// A copy, in memory of the library's own.
  Returns<BasicImage> Clone() const { return detail::Make<Policy, BasicImage>(KORVEL_Image_Clone, Get()); }

  /// The image in another format; for streams of images, see BasicImageConverter.
  Returns<BasicImage> ConvertTo(PixelFormat format, ConversionMode mode = ConversionMode::HighQuality) const {
    return detail::Make<Policy, BasicImage>(KORVEL_Image_ConvertTo, Get(), static_cast<uint32_t>(format),
                                            static_cast<uint32_t>(mode));
  }
  /// The same in the caller's memory, which must outlive the result.
  Returns<BasicImage> ConvertToBuffer(PixelFormat format, uint8_t* buffer, size_t bufferSize,
                                      ConversionMode mode = ConversionMode::HighQuality) const {
    return detail::Make<Policy, BasicImage>(KORVEL_Image_ConvertToBuffer, Get(), static_cast<uint32_t>(format), buffer,
                                            bufferSize, static_cast<uint32_t>(mode));
  }

  /// Writes a file; the path's ending tells the type.
  Returns<void> Write(std::string_view path) const {
    return detail::Finish<Policy>(KORVEL_ImageWriter_Write(Get(), path.data(), path.size()));
  }
  /// Writes a file of the library's own type, for every format.
  Returns<void> WriteAsRaw(std::string_view path) const {
    return detail::Finish<Policy>(KORVEL_ImageWriter_WriteAsRAW(Get(), path.data(), path.size()));
  }
  /// Writes a BMP file.
  Returns<void> WriteAsBmp(std::string_view path) const {
    return detail::Finish<Policy>(KORVEL_ImageWriter_WriteAsBMP(Get(), path.data(), path.size()));
  }
  /// quality from 10 (smallest file) to 100 (fastest).
  Returns<void> WriteAsPng(std::string_view path, uint32_t quality) const {
    return detail::Finish<Policy>(KORVEL_ImageWriter_WriteAsPNG(Get(), quality, path.data(), path.size()));
  }
  /// quality from 0 (smallest file) to 100 (best picture).
  Returns<void> WriteAsJpg(std::string_view path, uint32_t quality) const {
    return detail::Finish<Policy>(KORVEL_ImageWriter_WriteAsJPG(Get(), quality, path.data(), path.size()));
  }

 private:
  static Result<void> Refuse(const char* text) { return Error(ReturnCode::InvalidArgument, text); }

  template <class Sample>
  Returns<PixelView<Sample>> MakeView() const {
    detail::ImageMemory memory;
    const KORVEL_RETURN_CODE code = detail::Look(Get(), memory);
    if (code != KORVEL_RETURN_CODE_Success) {
      return Policy::template Fail<PixelView<Sample>>(detail::FailureOf(code));
    }
    return detail::ViewOf<Policy, Sample>(memory);
  }

  template <class Byte, class Word, class DoubleWord, class Visitor>
  auto VisitViews(Visitor& visitor) const -> Returns<decltype(visitor(std::declval<PixelView<Byte>>()))> {
    detail::ImageMemory memory;
    const KORVEL_RETURN_CODE code = detail::Look(Get(), memory);
    using Answer = decltype(visitor(std::declval<PixelView<Byte>>()));
    if (code != KORVEL_RETURN_CODE_Success) return Policy::template Fail<Answer>(detail::FailureOf(code));
    switch (memory.facts != nullptr ? memory.facts->SampleBytes() : 0) {
      case sizeof(uint32_t):
        return VisitView<Answer>(visitor, detail::ViewOf<Returning, DoubleWord>(memory));
      case sizeof(uint16_t):
        return VisitView<Answer>(visitor, detail::ViewOf<Returning, Word>(memory));
      default:
        return VisitView<Answer>(visitor, detail::ViewOf<Returning, Byte>(memory));
    }
  }

  template <class Answer, class Visitor, class View>
  static Returns<Answer> VisitView(Visitor& visitor, const Result<View>& view) {
    if (!view) return Policy::template Fail<Answer>(view.Failure());
    if constexpr (std::is_void_v<Answer>) {
      visitor(*view);
      return Returns<void>();
    } else {
      return visitor(*view);
    }
  }

  Result<void> TakePaddedLines(const uint8_t* buffer, size_t bufferSize, size_t stride) {
    detail::ImageMemory memory;
    const KORVEL_RETURN_CODE code = detail::Look(Get(), memory);
    if (code != KORVEL_RETURN_CODE_Success) return detail::FailureOf(code);
    if (memory.facts == nullptr) return Refuse("There is no image with pixels to copy to.");
    if (memory.facts->layout == PixelLayout::Mipi &&
        memory.width % detail::MipiGroup(memory.facts->significantBits) != 0) {
      return Refuse("The lines of this packed format don't end with whole groups of pixels.");
    }
    const size_t bitsPerLine = memory.width * memory.facts->BitsPerPixel();
    const size_t bytesPerLine = (bitsPerLine + 7) / 8;
    if (buffer == nullptr) return Refuse("buffer is not a valid pointer!");
    if (stride < bytesPerLine) return Refuse("stride is less than the bytes of a line.");
    if (bufferSize < bytesPerLine || (bufferSize - bytesPerLine) / stride < memory.height - 1) {
      return Refuse("bufferSize is too small for all lines.");
    }
    detail::CopyLines(buffer, stride, bitsPerLine, memory.height, memory.data);
    return {};
  }

  Result<void> TakeLegacyPacked(LegacyPixelFormat format, const uint8_t* buffer, size_t bufferSize) {
    detail::ImageMemory memory;
    const KORVEL_RETURN_CODE code = detail::Look(Get(), memory);
    if (code != KORVEL_RETURN_CODE_Success) return detail::FailureOf(code);
    if (memory.facts == nullptr) return Refuse("There is no image with pixels to copy to.");
    if (TargetFormat(format, memory.width, memory.height) != memory.facts->format) {
      return Refuse("The image has not the format that this older layout becomes.");
    }
    if (buffer == nullptr) return Refuse("buffer is not a valid pointer!");
    if (bufferSize < LegacyByteCount(memory.width, memory.height))
      return Refuse("bufferSize is too small for all pixels.");
    const size_t pixels = memory.width * memory.height;
    if (!memory.facts->IsPacked()) {
      detail::UnpackLegacy(buffer, pixels, memory.facts->significantBits, memory.data);
    } else if (memory.facts->significantBits == 10) {
      detail::RearrangeTo10g40(buffer, pixels, memory.data);
    } else {
      detail::RearrangeTo12g24(buffer, pixels, memory.data);
    }
    return {};
  }
};

/// Converts images between pixel formats, and keeps memory for streams of them.
template <class Policy>
class BasicImageConverter : public AnyImageConverter {
 public:
  /// What a call that tells a T returns: T itself, or a Result<T>.
  template <class T>
  using Returns = typename Policy::template Returns<T>;
  /// Images that this class makes.
  using Image = BasicImage<Policy>;

  using AnyImageConverter::AnyImageConverter;
  /// Takes over a converter of the other form.
  explicit BasicImageConverter(AnyImageConverter&& other) noexcept : AnyImageConverter(std::move(other)) {}

  /// Like Make.
  template <class P = Policy, class = detail::IfThrowing<P>>
  BasicImageConverter() : BasicImageConverter(Make()) {}

  /// A converter, in mode Fast.
  static Returns<BasicImageConverter> Make() {
    return detail::Make<Policy, BasicImageConverter>(KORVEL_ImageConverter_Construct);
  }

  /// Takes the memory for a stream of conversions, with imageCount results alive at once, ahead of time.
  Returns<void> PreAllocate(PixelFormat input, PixelFormat output, size_t width, size_t height, size_t imageCount) {
    return detail::Finish<Policy>(KORVEL_ImageConverter_PreAllocateConversion(
        Get(), static_cast<uint32_t>(input), static_cast<uint32_t>(output), width, height, imageCount));
  }

  /// How Bayer images become colour images.
  Returns<ConversionMode> Mode() const {
    return detail::Ask<Policy, ConversionMode, uint32_t>(KORVEL_ImageConverter_GetConversionMode, Get());
  }
  /// Sets how Bayer images become colour images, for the calls that follow.
  Returns<void> SetMode(ConversionMode mode) {
    return detail::Finish<Policy>(KORVEL_ImageConverter_SetConversionMode(Get(), static_cast<uint32_t>(mode)));
  }

  /// The formats that images of a format can be converted to, that format among them.
  Returns<std::vector<PixelFormat>> SupportedOutputs(PixelFormat input) const {
    return detail::List<Policy, PixelFormat, uint32_t>([&](uint32_t* formats, size_t* size) {
      return KORVEL_ImageConverter_GetSupportedOutputPixelFormats(Get(), static_cast<uint32_t>(input), formats, size);
    });
  }

  /// The image in another format, in memory that goes back to the converter.
  Returns<Image> Convert(const AnyImage& image, PixelFormat output) {
    return detail::Make<Policy, Image>(KORVEL_ImageConverter_Convert, Get(), image.Get(),
                                       static_cast<uint32_t>(output));
  }
  /// The same in the caller's memory, which must outlive the result.
  Returns<Image> ConvertToBuffer(const AnyImage& image, PixelFormat output, uint8_t* buffer, size_t bufferSize) {
    return detail::Make<Policy, Image>(KORVEL_ImageConverter_ConvertToBuffer, Get(), image.Get(),
                                       static_cast<uint32_t>(output), buffer, bufferSize);
  }
};

// ---------------------------------------------------------------------------------------------------- corrections --

/// Digital gain of mono and unpacked Bayer images.
template <class Policy>
class BasicGain : public AnyGain {
 public:
  /// What a call that tells a T returns: T itself, or a Result<T>.
  template <class T>
  using Returns = typename Policy::template Returns<T>;
  /// Images that this class makes.
  using Image = BasicImage<Policy>;

  using AnyGain::AnyGain;
  /// Takes over a gain of the other form.
  explicit BasicGain(AnyGain&& other) noexcept : AnyGain(std::move(other)) {}

  /// Like Make.
  template <class P = Policy, class = detail::IfThrowing<P>>
  BasicGain() : BasicGain(Make()) {}

  /// A gain object, with all gains 1.0.
  static Returns<BasicGain> Make() { return detail::Make<Policy, BasicGain>(KORVEL_Gain_Construct); }

  /// Sets the gain of all sites, as each gain in the limits of its range. The price is that of new tables, so set a
  /// gain when it changes.
  Returns<void> SetMaster(float value) { return Set(KORVEL_Gain_SetMasterGainValue, value); }
  /// Sets the gain of red sites.
  Returns<void> SetRed(float value) { return Set(KORVEL_Gain_SetRedGainValue, value); }
  /// Sets the gain of green sites.
  Returns<void> SetGreen(float value) { return Set(KORVEL_Gain_SetGreenGainValue, value); }
  /// Sets the gain of blue sites.
  Returns<void> SetBlue(float value) { return Set(KORVEL_Gain_SetBlueGainValue, value); }

  /// The gain of all sites.
  Returns<float> Master() const { return detail::Ask<Policy, float>(KORVEL_Gain_GetMasterGainValue, Get()); }
  /// The gain of red sites.
  Returns<float> Red() const { return detail::Ask<Policy, float>(KORVEL_Gain_GetRedGainValue, Get()); }
  /// The gain of green sites.
  Returns<float> Green() const { return detail::Ask<Policy, float>(KORVEL_Gain_GetGreenGainValue, Get()); }
  /// The gain of blue sites.
  Returns<float> Blue() const { return detail::Ask<Policy, float>(KORVEL_Gain_GetBlueGainValue, Get()); }

  /// The limits of the master gain.
  Returns<ValueRange<float>> MasterRange() const {
    return detail::AskRange<Policy, float>(KORVEL_Gain_GetMasterGainMin, KORVEL_Gain_GetMasterGainMax, Get());
  }
  /// The limits of red's gain.
  Returns<ValueRange<float>> RedRange() const {
    return detail::AskRange<Policy, float>(KORVEL_Gain_GetRedGainMin, KORVEL_Gain_GetRedGainMax, Get());
  }
  /// The limits of green's gain.
  Returns<ValueRange<float>> GreenRange() const {
    return detail::AskRange<Policy, float>(KORVEL_Gain_GetGreenGainMin, KORVEL_Gain_GetGreenGainMax, Get());
  }
  /// The limits of blue's gain.
  Returns<ValueRange<float>> BlueRange() const {
    return detail::AskRange<Policy, float>(KORVEL_Gain_GetBlueGainMin, KORVEL_Gain_GetBlueGainMax, Get());
  }

  /// Whether images of a format can be processed.
  Returns<bool> IsSupported(PixelFormat format) const {
    return detail::Ask<Policy, bool>(KORVEL_Gain_GetIsPixelFormatSupported, Get(), static_cast<uint32_t>(format));
  }

  /// Applies the gains to a new image, in memory that goes back to this object.
  Returns<Image> Process(const AnyImage& image) {
    return detail::Make<Policy, Image>(KORVEL_Gain_Process, Get(), image.Get());
  }
  /// Applies the gains to the image's own pixels.
  Returns<void> ProcessInPlace(AnyImage& image) {
    return detail::Finish<Policy>(KORVEL_Gain_ProcessInPlace(Get(), image.Get()));
  }

 private:
  Returns<void> Set(KORVEL_RETURN_CODE (*function)(KORVEL_GAIN_HANDLE, const float*), float value) {
    return detail::Finish<Policy>(function(Get(), &value));
  }
};

/// Gamma correction of mono, Bayer and colour images.
template <class Policy>
class BasicGammaCorrector : public AnyGammaCorrector {
 public:
  /// What a call that tells a T returns: T itself, or a Result<T>.
  template <class T>
  using Returns = typename Policy::template Returns<T>;
  /// Images that this class makes.
  using Image = BasicImage<Policy>;

  using AnyGammaCorrector::AnyGammaCorrector;
  /// Takes over a corrector of the other form.
  explicit BasicGammaCorrector(AnyGammaCorrector&& other) noexcept : AnyGammaCorrector(std::move(other)) {}

  /// Like Make.
  template <class P = Policy, class = detail::IfThrowing<P>>
  BasicGammaCorrector() : BasicGammaCorrector(Make()) {}

  /// A corrector with a gamma of 1.0.
  static Returns<BasicGammaCorrector> Make() {
    return detail::Make<Policy, BasicGammaCorrector>(KORVEL_GammaCorrector_Construct);
  }

  /// Sets gamma: above 1 it lightens. Its price is that of new tables, so set it when it changes.
  Returns<void> SetGamma(float value) {
    return detail::Finish<Policy>(KORVEL_GammaCorrector_SetGammaCorrectionValue(Get(), &value));
  }
  /// The gamma that was set.
  Returns<float> Gamma() const {
    return detail::Ask<Policy, float>(KORVEL_GammaCorrector_GetGammaCorrectionValue, Get());
  }
  /// The limits of gamma.
  Returns<ValueRange<float>> GammaRange() const {
    return detail::AskRange<Policy, float>(KORVEL_GammaCorrector_GetGammaCorrectionMin,
                                           KORVEL_GammaCorrector_GetGammaCorrectionMax, Get());
  }

  /// Whether images of a format can be processed.
  Returns<bool> IsSupported(PixelFormat format) const {
    return detail::Ask<Policy, bool>(KORVEL_GammaCorrector_GetIsPixelFormatSupported, Get(),
                                     static_cast<uint32_t>(format));
  }

  /// Corrects into a new image, in memory that goes back to this object.
  Returns<Image> Process(const AnyImage& image) {
    return detail::Make<Policy, Image>(KORVEL_GammaCorrector_Process, Get(), image.Get());
  }
  /// Corrects the image's own pixels.
  Returns<void> ProcessInPlace(AnyImage& image) {
    return detail::Finish<Policy>(KORVEL_GammaCorrector_ProcessInPlace(Get(), image.Get()));
  }
};

/// Colour correction by a matrix.
template <class Policy>
class BasicColorCorrector : public AnyColorCorrector {
 public:
  /// What a call that tells a T returns: T itself, or a Result<T>.
  template <class T>
  using Returns = typename Policy::template Returns<T>;
  /// Images that this class makes.
  using Image = BasicImage<Policy>;
  /// Nine factors, line by line: new red, green and blue from red, green and blue.
  using Matrix = std::array<float, 9>;

  using AnyColorCorrector::AnyColorCorrector;
  /// Takes over a corrector of the other form.
  explicit BasicColorCorrector(AnyColorCorrector&& other) noexcept : AnyColorCorrector(std::move(other)) {}

  /// Like Make.
  template <class P = Policy, class = detail::IfThrowing<P>>
  BasicColorCorrector() : BasicColorCorrector(Make()) {}

  /// A corrector with the identity as its matrix.
  static Returns<BasicColorCorrector> Make() {
    return detail::Make<Policy, BasicColorCorrector>(KORVEL_ColorCorrector_Construct);
  }

  /// Sets the matrix, for the calls that follow.
  Returns<void> SetFactors(const Matrix& factors) {
    return detail::Finish<Policy>(KORVEL_ColorCorrector_SetColorCorrectionFactors(Get(), factors.data()));
  }
  /// The matrix that was set.
  Returns<Matrix> Factors() const {
    Matrix factors{};
    size_t size = factors.size();
    const KORVEL_RETURN_CODE code = KORVEL_ColorCorrector_GetColorCorrectionFactors(Get(), factors.data(), &size);
    return detail::Finish<Policy, Matrix>(code, factors);
  }

  /// Whether images of a format can be processed.
  Returns<bool> IsSupported(PixelFormat format) const {
    return detail::Ask<Policy, bool>(KORVEL_ColorCorrector_GetIsPixelFormatSupported, Get(),
                                     static_cast<uint32_t>(format));
  }

  /// Corrects into a new image, in memory that goes back to this object.
  Returns<Image> Process(const AnyImage& image) {
    return detail::Make<Policy, Image>(KORVEL_ColorCorrector_Process, Get(), image.Get());
  }
  /// Corrects the image's own pixels.
  Returns<void> ProcessInPlace(AnyImage& image) {
    return detail::Finish<Policy>(KORVEL_ColorCorrector_ProcessInPlace(Get(), image.Get()));
  }
};

/// Replaces isolated bright pixels of raw images.
template <class Policy>
class BasicAdaptiveHotpixelCorrector : public AnyAdaptiveHotpixelCorrector {
 public:
  /// What a call that tells a T returns: T itself, or a Result<T>.
  template <class T>
  using Returns = typename Policy::template Returns<T>;
  /// Images that this class makes.
  using Image = BasicImage<Policy>;

  using AnyAdaptiveHotpixelCorrector::AnyAdaptiveHotpixelCorrector;
  /// Takes over a corrector of the other form.
  explicit BasicAdaptiveHotpixelCorrector(AnyAdaptiveHotpixelCorrector&& other) noexcept
      : AnyAdaptiveHotpixelCorrector(std::move(other)) {}

  /// Like Make.
  template <class P = Policy, class = detail::IfThrowing<P>>
  BasicAdaptiveHotpixelCorrector() : BasicAdaptiveHotpixelCorrector(Make()) {}

  /// A corrector with sensitivity 3, gain factor 100 percent and an empty list.
  static Returns<BasicAdaptiveHotpixelCorrector> Make() {
    return detail::Make<Policy, BasicAdaptiveHotpixelCorrector>(KORVEL_AdaptiveHotpixelCorrector_Construct);
  }

  /// From 1, which finds the fewest pixels, to 5, which finds the most.
  Returns<void> SetSensitivity(uint32_t level) {
    return detail::Finish<Policy>(KORVEL_AdaptiveHotpixelCorrector_SetSensitivity(Get(), level));
  }
  /// The sensitivity that was set.
  Returns<uint32_t> Sensitivity() const {
    return detail::Ask<Policy, uint32_t>(KORVEL_AdaptiveHotpixelCorrector_GetSensitivity, Get());
  }

  /// The sensor's gain in percent.
  Returns<void> SetGainFactorPercent(uint32_t percent) {
    return detail::Finish<Policy>(KORVEL_AdaptiveHotpixelCorrector_SetGainFactorPercent(Get(), percent));
  }
  /// The gain factor that was set.
  Returns<uint32_t> GainFactorPercent() const {
    return detail::Ask<Policy, uint32_t>(KORVEL_AdaptiveHotpixelCorrector_GetGainFactorPercent, Get());
  }

  /// Lists an image's hot pixels, for Hotpixels.
  Returns<void> Detect(const AnyImage& image) {
    return detail::Finish<Policy>(KORVEL_AdaptiveHotpixelCorrector_Detect(Get(), image.Get()));
  }
  /// The pixels that the last detection found, row by row. To be asked before Correct, which puts its own list in their
  /// place while their number stays.
  Returns<std::vector<Point>> Hotpixels() const {
    return detail::List<Policy, Point>([&](Point* points, size_t* size) {
      return KORVEL_AdaptiveHotpixelCorrector_GetHotpixels(Get(), points, size);
    });
  }

  /// Corrects the pixels of a list in a copy of the image. With an empty list the copy is made all the same, where the
  /// C function makes none, no format is refused, and the corrector isn't asked whether it holds anything.
  Returns<Image> Correct(const AnyImage& image, Span<const Point> hotpixels) {
    if (hotpixels.empty()) return detail::Make<Policy, Image>(KORVEL_Image_Clone, image.Get());
    return detail::Make<Policy, Image>(KORVEL_AdaptiveHotpixelCorrector_Correct, Get(), image.Get(), hotpixels.data(),
                                       hotpixels.size());
  }
  /// The same with a vector.
  Returns<Image> Correct(const AnyImage& image, const std::vector<Point>& hotpixels) {
    return Correct(image, Span<const Point>(hotpixels.data(), hotpixels.size()));
  }
  /// The same with a list in braces.
  Returns<Image> Correct(const AnyImage& image, std::initializer_list<Point> hotpixels) {
    return Correct(image, Span<const Point>(hotpixels.begin(), hotpixels.size()));
  }

  /// Detects an image's hot pixels and corrects them in a copy of it.
  Returns<Image> CorrectAdaptive(const AnyImage& image) {
    return detail::Make<Policy, Image>(KORVEL_AdaptiveHotpixelCorrector_CorrectAdaptive, Get(), image.Get());
  }
};

// ------------------------------------------------------------------------------------------------------- geometry --

/// Makes one pixel of a block of pixels.
template <class Policy>
class BasicBinning : public AnyBinning {
 public:
  /// What a call that tells a T returns: T itself, or a Result<T>.
  template <class T>
  using Returns = typename Policy::template Returns<T>;
  /// Images that this class makes.
  using Image = BasicImage<Policy>;

  using AnyBinning::AnyBinning;
  /// Takes over a binning of the other form.
  explicit BasicBinning(AnyBinning&& other) noexcept : AnyBinning(std::move(other)) {}

  /// Like Make.
  template <class P = Policy, class = detail::IfThrowing<P>>
  BasicBinning() : BasicBinning(Make()) {}

  /// A binning with factors of 1 and mode Sum.
  static Returns<BasicBinning> Make() { return detail::Make<Policy, BasicBinning>(KORVEL_Binning_Construct); }

  /// Width of a block, in the limits of FactorRange.
  Returns<void> SetX(uint8_t factor) { return detail::Finish<Policy>(KORVEL_Binning_SetBinningX(Get(), &factor)); }
  /// Height of a block, in the limits of FactorRange.
  Returns<void> SetY(uint8_t factor) { return detail::Finish<Policy>(KORVEL_Binning_SetBinningY(Get(), &factor)); }
  /// Width of a block.
  Returns<uint8_t> X() const { return detail::Ask<Policy, uint8_t>(KORVEL_Binning_GetBinningX, Get()); }
  /// Height of a block.
  Returns<uint8_t> Y() const { return detail::Ask<Policy, uint8_t>(KORVEL_Binning_GetBinningY, Get()); }
  /// The limits of both factors.
  Returns<ValueRange<uint8_t>> FactorRange() const {
    return detail::AskRange<Policy, uint8_t>(KORVEL_Binning_GetBinningMin, KORVEL_Binning_GetBinningMax, Get());
  }

  /// Whether a block becomes its mean or its sum.
  Returns<void> SetMode(BinningMode mode) {
    const auto value = static_cast<KORVEL_BINNING_MODE>(mode);
    return detail::Finish<Policy>(KORVEL_Binning_SetBinningMode(Get(), &value));
  }
  /// The mode that was set.
  Returns<BinningMode> Mode() const {
    return detail::Ask<Policy, BinningMode, KORVEL_BINNING_MODE>(KORVEL_Binning_GetBinningMode, Get());
  }

  /// The size of what an image becomes, 0 where it is too small.
  Returns<ImageSize> ExpectedOutputSize(ImageSize size, PixelFormat format) const {
    ImageSize output{};
    const KORVEL_RETURN_CODE code = KORVEL_Binning_ExpectedOutputSize(Get(), &output.width, &output.height, size.width,
                                                                      size.height, static_cast<uint32_t>(format));
    return detail::Finish<Policy, ImageSize>(code, output);
  }

  /// Whether a format has binning.
  Returns<bool> IsSupported(PixelFormat format) const {
    return detail::Ask<Policy, bool>(KORVEL_Binning_IsPixelformatSupported, Get(), static_cast<uint32_t>(format));
  }

  /// Bins into a new image, in memory that goes back to this object.
  Returns<Image> Process(const AnyImage& image) {
    return detail::Make<Policy, Image>(KORVEL_Binning_Process, Get(), image.Get());
  }
};

/// Mirrors and rotates images.
template <class Policy>
class BasicImageTransformer : public AnyImageTransformer {
 public:
  /// What a call that tells a T returns: T itself, or a Result<T>.
  template <class T>
  using Returns = typename Policy::template Returns<T>;
  /// Images that this class makes.
  using Image = BasicImage<Policy>;

  using AnyImageTransformer::AnyImageTransformer;
  /// Takes over a transformer of the other form.
  explicit BasicImageTransformer(AnyImageTransformer&& other) noexcept : AnyImageTransformer(std::move(other)) {}

  /// Like Make.
  template <class P = Policy, class = detail::IfThrowing<P>>
  BasicImageTransformer() : BasicImageTransformer(Make()) {}

  /// A transformer.
  static Returns<BasicImageTransformer> Make() {
    return detail::Make<Policy, BasicImageTransformer>(KORVEL_ImageTransformer_Construct);
  }

  /// Mirrors into a new image: exchanges top and bottom.
  Returns<Image> MirrorUpDown(const AnyImage& image) {
    return detail::Make<Policy, Image>(KORVEL_ImageTransformer_MirrorUpDown, Get(), image.Get());
  }
  /// Mirrors into a new image: exchanges left and right.
  Returns<Image> MirrorLeftRight(const AnyImage& image) {
    return detail::Make<Policy, Image>(KORVEL_ImageTransformer_MirrorLeftRight, Get(), image.Get());
  }
  /// Mirrors into a new image in both directions.
  Returns<Image> MirrorUpDownLeftRight(const AnyImage& image) {
    return detail::Make<Policy, Image>(KORVEL_ImageTransformer_MirrorUpDownLeftRight, Get(), image.Get());
  }

  /// Exchanges top and bottom of the image itself. Its format may change.
  Returns<void> MirrorUpDownInPlace(AnyImage& image) {
    return detail::Finish<Policy>(KORVEL_ImageTransformer_MirrorUpDownInPlace(Get(), image.Get()));
  }
  /// Exchanges left and right of the image itself. Its format may change.
  Returns<void> MirrorLeftRightInPlace(AnyImage& image) {
    return detail::Finish<Policy>(KORVEL_ImageTransformer_MirrorLeftRightInPlace(Get(), image.Get()));
  }
  /// Mirrors the image itself in both directions. Its format may change.
  Returns<void> MirrorUpDownLeftRightInPlace(AnyImage& image) {
    return detail::Finish<Policy>(KORVEL_ImageTransformer_MirrorUpDownLeftRightInPlace(Get(), image.Get()));
  }

  /// Rotates into a new image.
  Returns<Image> Rotate(const AnyImage& image, RotationAngle angle) {
    KORVEL_IMAGE_HANDLE handle = nullptr;
    const KORVEL_RETURN_CODE code =
        KORVEL_ImageTransformer_Rotate(Get(), image.Get(), &handle, static_cast<uint32_t>(angle));
    return detail::Finish<Policy, Image>(code, Image(handle));
  }
  /// Rotates the image's own pixels. Its format and size may change.
  Returns<void> RotateInPlace(AnyImage& image, RotationAngle angle) {
    return detail::Finish<Policy>(
        KORVEL_ImageTransformer_RotateInPlace(Get(), image.Get(), static_cast<uint32_t>(angle)));
  }
};

// --------------------------------------------------------------------------------------------------- measurements --

/// How often each value occurs in an image, channel by channel.
template <class Policy>
class BasicHistogram : public AnyHistogram {
 public:
  /// What a call that tells a T returns: T itself, or a Result<T>.
  template <class T>
  using Returns = typename Policy::template Returns<T>;

  using AnyHistogram::AnyHistogram;
  /// Takes over a histogram of the other form.
  explicit BasicHistogram(AnyHistogram&& other) noexcept : AnyHistogram(std::move(other)) {}

  /// Like Make.
  template <class P = Policy, class = detail::IfThrowing<P>>
  explicit BasicHistogram(const AnyImage& image) : BasicHistogram(Make(image)) {}

  /// Counts the values of an image. The image isn't kept.
  static Returns<BasicHistogram> Make(const AnyImage& image) {
    return detail::Make<Policy, BasicHistogram>(KORVEL_Histogram_Construct, image.Get());
  }

  /// Format of the image that was measured.
  Returns<PixelFormat> Format() const {
    return detail::Ask<Policy, PixelFormat, uint32_t>(KORVEL_Histogram_GetPixelFormat, Get());
  }
  /// Channels of the image that was measured.
  Returns<size_t> NumChannels() const { return detail::Ask<Policy, size_t>(KORVEL_Histogram_GetNumChannels, Get()); }

  /// Sum of a channel's values.
  Returns<uint64_t> PixelSum(size_t channel) const {
    return detail::Ask<Policy, uint64_t>(KORVEL_Histogram_GetPixelSumForChannel, Get(), channel);
  }
  /// Number of a channel's values.
  Returns<uint64_t> PixelCount(size_t channel) const {
    return detail::Ask<Policy, uint64_t>(KORVEL_Histogram_GetPixelCountForChannel, Get(), channel);
  }

  /// How often each value from 0 to the maximum occurs in a channel.
  Returns<std::vector<uint64_t>> Bins(size_t channel) const {
    return detail::List<Policy, uint64_t>(
        [&](uint64_t* bins, size_t* size) { return KORVEL_Histogram_GetBinsForChannel(Get(), channel, bins, size); });
  }
};

/// The values of one row or column of an image, channel by channel.
template <class Policy>
class BasicPixelLine : public AnyPixelLine {
 public:
  /// What a call that tells a T returns: T itself, or a Result<T>.
  template <class T>
  using Returns = typename Policy::template Returns<T>;

  using AnyPixelLine::AnyPixelLine;
  /// Takes over a line of the other form.
  explicit BasicPixelLine(AnyPixelLine&& other) noexcept : AnyPixelLine(std::move(other)) {}

  /// Like Make.
  template <class P = Policy, class = detail::IfThrowing<P>>
  BasicPixelLine(const AnyImage& image, LineOrientation orientation, size_t offset)
      : BasicPixelLine(Make(image, orientation, offset)) {}

  /// Copies the values of the row or column with the number offset. The image isn't kept.
  static Returns<BasicPixelLine> Make(const AnyImage& image, LineOrientation orientation, size_t offset) {
    return detail::Make<Policy, BasicPixelLine>(KORVEL_PixelLine_Construct, image.Get(),
                                                static_cast<uint32_t>(orientation), offset);
  }

  /// Format of the image that was measured.
  Returns<PixelFormat> Format() const {
    return detail::Ask<Policy, PixelFormat, uint32_t>(KORVEL_PixelLine_GetPixelFormat, Get());
  }
  /// Whether it was a row or a column.
  Returns<LineOrientation> Orientation() const {
    return detail::Ask<Policy, LineOrientation, uint32_t>(KORVEL_PixelLine_GetOrientation, Get());
  }
  /// Which row or column it was.
  Returns<size_t> Offset() const { return detail::Ask<Policy, size_t>(KORVEL_PixelLine_GetOffset, Get()); }
  /// Channels of the image that was measured.
  Returns<size_t> NumChannels() const { return detail::Ask<Policy, size_t>(KORVEL_PixelLine_GetNumChannels, Get()); }

  /// A channel's values along the line.
  Returns<std::vector<uint32_t>> Values(size_t channel) const {
    return detail::List<Policy, uint32_t>([&](uint32_t* values, size_t* size) {
      return KORVEL_PixelLine_GetValuesForChannel(Get(), channel, values, size);
    });
  }
};

// ---------------------------------------------------------------------------------------------------------- video --

/// A recording of a stream of images to a file, which a thread of the video writes. The destructor waits until all
/// queued images are written; Close does so, too, and tells whether the file came to a good end.
template <class Policy>
class BasicVideo : public AnyVideo {
 public:
  /// What a call that tells a T returns: T itself, or a Result<T>.
  template <class T>
  using Returns = typename Policy::template Returns<T>;

  using AnyVideo::AnyVideo;
  /// Takes over a video of the other form.
  explicit BasicVideo(AnyVideo&& other) noexcept : AnyVideo(std::move(other)) {}

  /// Like Open.
  template <class P = Policy, class = detail::IfThrowing<P>>
  explicit BasicVideo(const std::string& fileName, VideoContainer container = VideoContainer::Avi,
                      VideoEncoder encoder = VideoEncoder::Mjpeg)
      : BasicVideo(Open(fileName, container, encoder)) {}

  /// Makes a file, whose name is UTF-8, and a video on it. A file that exists is never overwritten.
  static Returns<BasicVideo> Open(const std::string& fileName, VideoContainer container = VideoContainer::Avi,
                                  VideoEncoder encoder = VideoEncoder::Mjpeg) {
    KORVEL_VIDEO_HANDLE handle = nullptr;
    const KORVEL_RETURN_CODE code = KORVEL_VideoWriter_Video_Open(
        &handle, fileName.c_str(), static_cast<uint16_t>(container), static_cast<uint16_t>(encoder));
    return detail::Finish<Policy, BasicVideo>(code, BasicVideo(handle));
  }

  /// Whether this is an open video; false after Close.
  Returns<bool> IsOpen() const { return detail::Ask<Policy, bool, uint8_t>(KORVEL_VideoWriter_Video_IsOpen, Get()); }

  /// Waits until all queued images are written, and ends the file. After a failure the counters can still be asked, and
  /// a second call, or the destructor, ends the video.
  Returns<void> Close() {
    const KORVEL_RETURN_CODE code = KORVEL_VideoWriter_Video_Close(Get());
    if (code == KORVEL_RETURN_CODE_Success) Release();
    return detail::Finish<Policy>(code);
  }

  /// Appends a copy of an image: true if it was queued, false if the queue was full and the image dropped, which is no
  /// failure. Nobody waits.
  Returns<bool> Append(const AnyImage& image) {
    return Unless(KORVEL_RETURN_CODE_QueueFull, KORVEL_VideoWriter_Video_Append(Get(), image.Get()));
  }

  /// Quality of the pictures, from 1 to 100; from the next image that is compressed.
  Returns<void> SetQuality(int32_t quality) {
    return detail::Finish<Policy>(
        KORVEL_VideoWriter_Encoder_SetOption(Get(), KORVEL_VIDEO_ENCODER_OPTION_Quality, &quality, sizeof quality));
  }
  /// The quality that is set.
  Returns<int32_t> Quality() const {
    int32_t quality = 0;
    const KORVEL_RETURN_CODE code = KORVEL_VideoWriter_Encoder_GetOption(Get(), KORVEL_VIDEO_ENCODER_OPTION_Quality,
                                                                         &quality, sizeof quality, nullptr);
    return detail::Finish<Policy, int32_t>(code, quality);
  }
  /// The limits of the quality.
  Returns<OptionRange<int32_t>> QualityRange() const {
    OptionRange<int32_t> range{};
    const KORVEL_RETURN_CODE code = KORVEL_VideoWriter_Encoder_OptionRange(Get(), KORVEL_VIDEO_ENCODER_OPTION_Quality,
                                                                           &range.min, &range.max, &range.increment);
    return detail::Finish<Policy, OptionRange<int32_t>>(code, range);
  }

  /// Images per second, above 0, of which players take the whole part.
  Returns<void> SetFramesPerSecond(double framesPerSecond) {
    return detail::Finish<Policy>(KORVEL_VideoWriter_Container_SetOption(
        Get(), KORVEL_VIDEO_CONTAINER_OPTION_FramesPerSecond, &framesPerSecond, sizeof framesPerSecond));
  }
  /// The images per second that are set.
  Returns<double> FramesPerSecond() const {
    double framesPerSecond = 0;
    const KORVEL_RETURN_CODE code = KORVEL_VideoWriter_Container_GetOption(
        Get(), KORVEL_VIDEO_CONTAINER_OPTION_FramesPerSecond, &framesPerSecond, sizeof framesPerSecond, nullptr);
    return detail::Finish<Policy, double>(code, framesPerSecond);
  }
  /// Options of containers have no range: always fails with NotSupported.
  Returns<OptionRange<double>> FramesPerSecondRange() const {
    OptionRange<double> range{};
    const KORVEL_RETURN_CODE code = KORVEL_VideoWriter_Container_OptionRange(
        Get(), KORVEL_VIDEO_CONTAINER_OPTION_FramesPerSecond, &range.min, &range.max, &range.increment);
    return detail::Finish<Policy, OptionRange<double>>(code, range);
  }

  /// Images written so far.
  Returns<uint64_t> EncodedFrames() const {
    return detail::Ask<Policy, uint64_t>(KORVEL_VideoWriter_Video_GetEncodedFrames, Get());
  }
  /// Images dropped so far.
  Returns<uint64_t> DroppedFrames() const {
    return detail::Ask<Policy, uint64_t>(KORVEL_VideoWriter_Video_GetDroppedFrames, Get());
  }
  /// Bytes of all written images, compressed.
  Returns<uint64_t> FileSize() const {
    return detail::Ask<Policy, uint64_t>(KORVEL_VideoWriter_Video_GetFileSize, Get());
  }
  /// Sets the counts of written and dropped images to 0.
  Returns<void> ResetFrameCounters() {
    return detail::Finish<Policy>(KORVEL_VideoWriter_Video_ResetFrameCounters(Get()));
  }

  /// How many images the queue holds; to be set before the first image, in the limits of QueueRange.
  Returns<void> SetQueueSize(uint32_t size) {
    return detail::Finish<Policy>(KORVEL_VideoWriter_Queue_SetSize(Get(), size));
  }
  /// How many images the queue can hold.
  Returns<uint32_t> QueueSize() const { return detail::Ask<Policy, uint32_t>(KORVEL_VideoWriter_Queue_GetSize, Get()); }
  /// The limits of the queue's size.
  Returns<ValueRange<uint32_t>> QueueRange() const {
    ValueRange<uint32_t> range{};
    const KORVEL_RETURN_CODE code = KORVEL_VideoWriter_Queue_GetRange(Get(), &range.min, &range.max);
    return detail::Finish<Policy, ValueRange<uint32_t>>(code, range);
  }
  /// How many images the queue holds now.
  Returns<uint32_t> Queued() const { return detail::Ask<Policy, uint32_t>(KORVEL_VideoWriter_Queue_GetQueued, Get()); }

  /// Waits until the queue has run dry: true if it has, false if time ran out, which is no failure. Times are limited
  /// to 0 and 2^32 - 1 milliseconds.
  Returns<bool> WaitUntilQueueEmpty(std::chrono::milliseconds timeout) {
    return Unless(KORVEL_RETURN_CODE_Timeout,
                  KORVEL_VideoWriter_Video_WaitUntilQueueEmpty(Get(), Milliseconds(timeout)));
  }
  /// The same: it doesn't answer for each image.
  Returns<bool> WaitUntilFrameDone(std::chrono::milliseconds timeout) {
    return Unless(KORVEL_RETURN_CODE_Timeout,
                  KORVEL_VideoWriter_Video_WaitUntilFrameDone(Get(), Milliseconds(timeout)));
  }

  /// Encoders for a container.
  static Returns<std::vector<VideoEncoder>> EncodersFor(VideoContainer container) {
    return detail::List<Policy, VideoEncoder, uint16_t>([&](uint16_t* encoders, size_t* size) {
      return KORVEL_VideoWriter_GetSupportedEncodersForAContainer(static_cast<uint16_t>(container), encoders, size);
    });
  }
  /// Containers for an encoder.
  static Returns<std::vector<VideoContainer>> ContainersFor(VideoEncoder encoder) {
    return detail::List<Policy, VideoContainer, uint16_t>([&](uint16_t* containers, size_t* size) {
      return KORVEL_VideoWriter_GetSupportedContainersForAnEncoder(static_cast<uint16_t>(encoder), containers, size);
    });
  }
  /// Formats of images that an encoder takes.
  static Returns<std::vector<PixelFormat>> PixelFormatsFor(VideoEncoder encoder) {
    return detail::List<Policy, PixelFormat, uint32_t>([&](uint32_t* formats, size_t* size) {
      return KORVEL_VideoWriter_Encoder_GetSupportedPixelFormats(static_cast<uint16_t>(encoder), formats, size);
    });
  }

 private:
  static Returns<bool> Unless(KORVEL_RETURN_CODE expected, KORVEL_RETURN_CODE code) {
    if (code == expected) return false;
    return detail::Finish<Policy, bool>(code, true);
  }

  static uint32_t Milliseconds(std::chrono::milliseconds timeout) {
    constexpr auto kMost = std::numeric_limits<uint32_t>::max();
    if (timeout.count() < 0) return 0;
    return timeout.count() > kMost ? kMost : static_cast<uint32_t>(timeout.count());
  }
};

// -------------------------------------------------------------------------------------------------- the two forms --

/// Answers about pixel formats; throws.
using FormatQueries = BasicFormatQueries<Throwing>;
/// What the library tells of itself; throws.
using Library = BasicLibrary<Throwing>;
/// Images whose calls throw.
using Image = BasicImage<Throwing>;
/// Converters whose calls throw.
using ImageConverter = BasicImageConverter<Throwing>;
/// Gains whose calls throw.
using Gain = BasicGain<Throwing>;
/// Gamma correctors whose calls throw.
using GammaCorrector = BasicGammaCorrector<Throwing>;
/// Colour correctors whose calls throw.
using ColorCorrector = BasicColorCorrector<Throwing>;
/// Hot pixel correctors whose calls throw.
using AdaptiveHotpixelCorrector = BasicAdaptiveHotpixelCorrector<Throwing>;
/// Binning whose calls throw.
using Binning = BasicBinning<Throwing>;
/// Transformers whose calls throw.
using ImageTransformer = BasicImageTransformer<Throwing>;
/// Histograms whose calls throw.
using Histogram = BasicHistogram<Throwing>;
/// Lines of pixels whose calls throw.
using PixelLine = BasicPixelLine<Throwing>;
/// Videos whose calls throw.
using Video = BasicVideo<Throwing>;

/// The form that returns failures.
namespace nothrow {

/// Answers about pixel formats; returns failures.
using FormatQueries = BasicFormatQueries<Returning>;
/// What the library tells of itself; returns failures.
using Library = BasicLibrary<Returning>;
/// Images whose calls return failures.
using Image = BasicImage<Returning>;
/// Converters whose calls return failures.
using ImageConverter = BasicImageConverter<Returning>;
/// Gains whose calls return failures.
using Gain = BasicGain<Returning>;
/// Gamma correctors whose calls return failures.
using GammaCorrector = BasicGammaCorrector<Returning>;
/// Colour correctors whose calls return failures.
using ColorCorrector = BasicColorCorrector<Returning>;
/// Hot pixel correctors whose calls return failures.
using AdaptiveHotpixelCorrector = BasicAdaptiveHotpixelCorrector<Returning>;
/// Binning whose calls return failures.
using Binning = BasicBinning<Returning>;
/// Transformers whose calls return failures.
using ImageTransformer = BasicImageTransformer<Returning>;
/// Histograms whose calls return failures.
using Histogram = BasicHistogram<Returning>;
/// Lines of pixels whose calls return failures.
using PixelLine = BasicPixelLine<Returning>;
/// Videos whose calls return failures.
using Video = BasicVideo<Returning>;

}  // namespace nothrow
}  // namespace korvel

#endif  // KORVEL_KORVEL_HPP

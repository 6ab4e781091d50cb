// The interfaces of modules, which do one operation on images.
#pragma once

#include "core/geometry.h"
#include "core/image.h"

namespace img::processing {

// What a wrapper hands on to the instances that it makes.
class ModuleParameters {
 public:
  // The block of parameters of a family that has one; null otherwise.
  virtual void* GetParameters() { return parameters_; }
  void SetParameters(void* parameters) { parameters_ = parameters; }

 protected:
  ~ModuleParameters() = default;

 private:
  void* parameters_ = nullptr;
};

// Turns one image into another of the same size and usually of another format.
class IfcConversionProcessingModule : public ModuleParameters {
 public:
  IfcConversionProcessingModule() = default;
  IfcConversionProcessingModule(const IfcConversionProcessingModule&) = delete;
  IfcConversionProcessingModule& operator=(const IfcConversionProcessingModule&) = delete;
  virtual ~IfcConversionProcessingModule() = default;

  // Both images exist, and output has the size and format that the caller derived from GetOutputImageFormat.
  virtual void Process(const IfcImage& input, IfcImage& output) = 0;

  // What the module makes of an image: the same area, and a format that is Invalid where it has no answer.
  virtual ImageFormat GetOutputImageFormat(const ImageFormat& input) = 0;

  // Whether the family can take that format; asked of an instance, whether it is the format that it was made for.
  virtual bool IsInputFormatSupported(PixelFormatId format) = 0;
};

// Changes one image in place.
class IfcInplaceProcessingModule : public ModuleParameters {
 public:
  IfcInplaceProcessingModule() = default;
  IfcInplaceProcessingModule(const IfcInplaceProcessingModule&) = delete;
  IfcInplaceProcessingModule& operator=(const IfcInplaceProcessingModule&) = delete;
  virtual ~IfcInplaceProcessingModule() = default;

  virtual void Process(IfcImage& image) = 0;
};

// Makes an image whose pixels lie elsewhere.
class IfcTransformationProcessingModule : public ModuleParameters {
 public:
  IfcTransformationProcessingModule() = default;
  IfcTransformationProcessingModule(const IfcTransformationProcessingModule&) = delete;
  IfcTransformationProcessingModule& operator=(const IfcTransformationProcessingModule&) = delete;
  virtual ~IfcTransformationProcessingModule() = default;

  virtual void Process(const IfcImage& input, IfcImage& output) = 0;
};

// The instance for a pair of formats between which a family has no work. Intended: it does nothing, silently; whoever
// builds chains asks IsInputFormatSupported first.
class ConversionModuleNotImplementedForFormat : public IfcConversionProcessingModule {
 public:
  void Process(const IfcImage&, IfcImage&) override {}
  ImageFormat GetOutputImageFormat(const ImageFormat& input) override { return {input.area, PixelFormatId::Invalid}; }
  bool IsInputFormatSupported(PixelFormatId) override { return false; }
};

// What all working instances for a pair of formats share.
template <PixelFormatId formatIdInput, PixelFormatId formatIdOutput>
class FormatPairModule : public IfcConversionProcessingModule {
 public:
  ImageFormat GetOutputImageFormat(const ImageFormat& input) override { return {input.area, formatIdOutput}; }
  bool IsInputFormatSupported(PixelFormatId format) override { return format == formatIdInput; }
};

}  // namespace img::processing

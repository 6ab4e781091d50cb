// What callers hold: modules for all formats of a family, which make the instance for the formats at hand on first use
// and keep it as long as the formats stay the same.
//
// One wrapper serves one thread at a time, since a change of formats replaces the instance without a lock.
//
// Members that reach a grid are defined outside their classes: they are not inline then, so that a family can declare
// its wrapper as an extern template and keep the grid in its own source.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "core/format_dispatch.h"
#include "processing/module_timing.h"
#include "processing/processing_module.h"

namespace img::processing {

// The instance of a conversion family for the pair of formats used last.
class FormatPairInstance {
 public:
  // create makes an instance for a pair; if it throws, the instance at hand stays.
  template <class Create>
  IfcConversionProcessingModule& For(PixelFormatId input, PixelFormatId output, void* parameters, Create&& create) {
    if (!impl_ || implInput_ != input || implOutput_ != output) {
      impl_ = create(input, output);
      implInput_ = input;
      implOutput_ = output;
      impl_->SetParameters(parameters);
    }
    return *impl_;
  }

 private:
  std::unique_ptr<IfcConversionProcessingModule> impl_;
  PixelFormatId implInput_ = PixelFormatId::BayerRG8;  // a placeholder while there is no instance
  PixelFormatId implOutput_ = PixelFormatId::BayerRG8;
};

class Wrapper_ConversionProcessingModule : public IfcConversionProcessingModule {
 public:
  void Process(const IfcImage& input, IfcImage& output) final {
    instance_
        .For(input.PixelFormat(), output.PixelFormat(), GetParameters(),
             [this](PixelFormatId in, PixelFormatId out) { return CreateImpl(in, out); })
        .Process(input, output);
  }

  // A new instance from the family's grid. Throws what the grid's dispatcher throws.
  virtual std::unique_ptr<IfcConversionProcessingModule> CreateImpl(PixelFormatId input, PixelFormatId output) = 0;

 private:
  FormatPairInstance instance_;
};

// For a family with a full grid of public formats. Each run is timed, under "PM_Conversion::" and the family's name.
template <template <PixelFormatId, PixelFormatId> class T>
class TemplateWrapper_ConversionProcessingModule : public IfcConversionProcessingModule {
 public:
  explicit TemplateWrapper_ConversionProcessingModule(const std::string& name)
      : moduleId_(ModuleTimingRegistry::Instance().IdOf("PM_Conversion::" + name)) {}

  void Process(const IfcImage& input, IfcImage& output) override;

 private:
  FormatPairInstance instance_;
  uint32_t moduleId_;
};

template <template <PixelFormatId, PixelFormatId> class T>
void TemplateWrapper_ConversionProcessingModule<T>::Process(const IfcImage& input, IfcImage& output) {
  IfcConversionProcessingModule& impl = instance_.For(
      input.PixelFormat(), output.PixelFormat(), GetParameters(),
      [](PixelFormatId in, PixelFormatId out) { return MakeFormatClass<T, IfcConversionProcessingModule>(in, out); });
  const ScopedModuleTiming timing(moduleId_);
  impl.Process(input, output);
}

// The instance of a family for the format used last.
template <template <PixelFormatId> class T, class TClassIfc>
class FormatInstance {
 public:
  TClassIfc& For(PixelFormatId format) {
    if (!impl_ || implFormat_ != format) {
      impl_ = MakeFormatClass<T, TClassIfc>(format);
      implFormat_ = format;
    }
    return *impl_;
  }

 private:
  std::unique_ptr<TClassIfc> impl_;
  PixelFormatId implFormat_ = PixelFormatId::BayerRG8;  // a placeholder while there is no instance
};

template <template <PixelFormatId> class T>
class TemplateWrapper_InplaceProcessingModule : public IfcInplaceProcessingModule {
 public:
  void Process(IfcImage& image) override;

 private:
  FormatInstance<T, IfcInplaceProcessingModule> instance_;
};

template <template <PixelFormatId> class T>
void TemplateWrapper_InplaceProcessingModule<T>::Process(IfcImage& image) {
  IfcInplaceProcessingModule& impl = instance_.For(image.PixelFormat());
  impl.SetParameters(this->GetParameters());
  impl.Process(image);
}

template <template <PixelFormatId> class T, class TClassIfc>
class TemplateWrapper_TransformationModule : public TClassIfc {
 public:
  void Process(const IfcImage& input, IfcImage& output) override;

 private:
  FormatInstance<T, TClassIfc> instance_;
};

template <template <PixelFormatId> class T, class TClassIfc>
void TemplateWrapper_TransformationModule<T, TClassIfc>::Process(const IfcImage& input, IfcImage& output) {
  TClassIfc& impl = instance_.For(input.PixelFormat());
  impl.SetParameters(this->GetParameters());
  impl.Process(input, output);
}

// For modules that turn an image into a record. Each run is timed, under "PM_Measure::" and the family's name.
template <template <PixelFormatId> class T, class TClassIfc>
class TemplateWrapper_MeasureModule {
 public:
  explicit TemplateWrapper_MeasureModule(const std::string& name)
      : moduleId_(ModuleTimingRegistry::Instance().IdOf("PM_Measure::" + name)) {}

  // Further arguments and the result are those of the interface's own Process.
  template <class... Args>
  decltype(auto) Process(const IfcImage& image, Args&&... args) {
    TClassIfc& impl = instance_.For(image.PixelFormat());
    const ScopedModuleTiming timing(moduleId_);
    return impl.Process(image, std::forward<Args>(args)...);
  }

 private:
  FormatInstance<T, TClassIfc> instance_;
  uint32_t moduleId_;
};

}  // namespace img::processing

KORVEL_NAME_TYPE_FOR_DISPATCH(img::processing::IfcConversionProcessingModule,
                              "img::processing::IfcConversionProcessingModule");
KORVEL_NAME_TYPE_FOR_DISPATCH(img::processing::IfcInplaceProcessingModule,
                              "img::processing::IfcInplaceProcessingModule");
KORVEL_NAME_TYPE_FOR_DISPATCH(img::processing::IfcTransformationProcessingModule,
                              "img::processing::IfcTransformationProcessingModule");

// The modules of mirrors and turns, with what their owner chooses for them.
#pragma once

#include "core/instruction_set.h"
#include "processing/geometry/move_image.h"
#include "processing/module_wrappers.h"

namespace img::processing {

// The parameters of all instances. The scratch is for turns in place, and theirs alone.
struct MoveParameters {
  InstructionSet set;
  MoveScratch scratch;
};

// Wrapper is one that doesn't time its runs.
template <class Wrapper>
class MoveModule : public Wrapper {
 public:
  explicit MoveModule(const ProcessorFeatures& features = ProcessorFeatures::OfThisProcessor())
      : parameters_{InstructionSetOf(features), {}} {}

  void* GetParameters() override { return &parameters_; }

 private:
  MoveParameters parameters_;
};

template <template <PixelFormatId> class T>
using MoveIntoAnother = MoveModule<TemplateWrapper_TransformationModule<T, IfcTransformationProcessingModule>>;
template <template <PixelFormatId> class T>
using MoveInPlace = MoveModule<TemplateWrapper_InplaceProcessingModule<T>>;

// For the instances.
inline MoveParameters& MoveParametersOf(ModuleParameters& instance) {
  return *static_cast<MoveParameters*>(instance.GetParameters());
}

}  // namespace img::processing

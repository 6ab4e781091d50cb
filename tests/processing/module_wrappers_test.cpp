#include "processing/module_wrappers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/test_images.h"

namespace {

using img::IfcImage;
using img::ImageFormat;
using img::PixelFormatId;
using img::PixelFormatInfo_Name;
using korvel_test::Failure;
using korvel_test::FailureOf;
using korvel_test::TestImage;
using testing::ElementsAre;
using testing::IsEmpty;

using namespace img::processing;
using enum PixelFormatId;

// What the families below did, in order.
std::vector<std::string> events;

std::vector<std::string> TakeEvents() { return std::exchange(events, {}); }

bool runsFail = false;

void Run(const std::string& name) {
  events.push_back("run " + name);
  if (runsFail) throw std::runtime_error("the run failed");
}

template <PixelFormatId in, PixelFormatId out>
class PairModule final : public FormatPairModule<in, out> {
 public:
  PairModule() { events.push_back("make " + Name()); }
  ~PairModule() override { events.push_back("end " + Name()); }
  void Process(const IfcImage&, IfcImage&) override {
    parametersOfLastRun = this->GetParameters();
    Run(Name());
  }

  static inline void* parametersOfLastRun = nullptr;

 private:
  static std::string Name() { return std::string(img::kFacts<in>.name) + " " + std::string(img::kFacts<out>.name); }
};

template <PixelFormatId format>
class InplaceModule final : public IfcInplaceProcessingModule {
 public:
  InplaceModule() { events.push_back("make " + PixelFormatInfo_Name(format)); }
  ~InplaceModule() override { events.push_back("end " + PixelFormatInfo_Name(format)); }
  void Process(IfcImage&) override { Run(PixelFormatInfo_Name(format)); }
};

template <PixelFormatId format>
class TransformationModule final : public IfcTransformationProcessingModule {
 public:
  TransformationModule() { events.push_back("make " + PixelFormatInfo_Name(format)); }
  void Process(const IfcImage&, IfcImage& output) override {
    Run(PixelFormatInfo_Name(format) + " into " + PixelFormatInfo_Name(output.PixelFormat()));
  }
};

class WidthIfc {
 public:
  virtual ~WidthIfc() = default;
  virtual size_t Process(const IfcImage& image, size_t factor) = 0;
};

template <PixelFormatId format>
class WidthModule final : public WidthIfc {
 public:
  WidthModule() { events.push_back("make " + PixelFormatInfo_Name(format)); }
  size_t Process(const IfcImage& image, size_t factor) override {
    Run(PixelFormatInfo_Name(format));
    return image.Area().size.width * factor;
  }
};

}  // namespace

KORVEL_NAME_PAIR_FOR_DISPATCH(PairModule, "PairModule");
KORVEL_NAME_FOR_DISPATCH(InplaceModule, "InplaceModule");
KORVEL_NAME_FOR_DISPATCH(TransformationModule, "TransformationModule");
KORVEL_NAME_FOR_DISPATCH(WidthModule, "WidthModule");
KORVEL_NAME_TYPE_FOR_DISPATCH(WidthIfc, "WidthIfc");

namespace {

// A family with cells for the unpacked Bayer formats and the colours of their depth.
class BayerFamily : public Wrapper_ConversionProcessingModule {
 public:
  ImageFormat GetOutputImageFormat(const ImageFormat& input) override { return input; }
  bool IsInputFormatSupported(PixelFormatId) override { return true; }
  std::unique_ptr<IfcConversionProcessingModule> CreateImpl(PixelFormatId input, PixelFormatId output) override {
    return img::MakeFormatClass_Bayer2Color<PairModule, IfcConversionProcessingModule>(input, output);
  }
};

class BayerFamilyWithParameters final : public BayerFamily {
 public:
  void* GetParameters() override { return &parameters; }
  int parameters = 0;
};

class TimedFamily final : public TemplateWrapper_ConversionProcessingModule<PairModule> {
 public:
  explicit TimedFamily(const std::string& name) : TemplateWrapper_ConversionProcessingModule(name) {}
  ImageFormat GetOutputImageFormat(const ImageFormat& input) override { return input; }
  bool IsInputFormatSupported(PixelFormatId) override { return true; }
};

class ModuleWrappers : public testing::Test {
 protected:
  void SetUp() override {
    events.clear();
    runsFail = false;
  }
  void TearDown() override { runsFail = false; }

  TestImage bayerRG8{BayerRG8, 2, 2};
  TestImage bayerGR8{BayerGR8, 2, 2};
  TestImage rgb8{RGB8, 2, 2};
  TestImage bgr8{BGR8, 2, 2};
  TestImage mono8{Mono8, 3, 2};
};

// ------------------------------------------------------------------------------------------------- conversion pairs --

TEST_F(ModuleWrappers, MakeNothingBeforeTheFirstRun) {
  { BayerFamily family; }
  EXPECT_THAT(TakeEvents(), IsEmpty());
}

TEST_F(ModuleWrappers, KeepTheInstanceWhileThePairStays) {
  BayerFamily family;
  family.Process(*bayerRG8, *rgb8);
  EXPECT_THAT(TakeEvents(), ElementsAre("make BayerRG8 RGB8", "run BayerRG8 RGB8"));
  family.Process(*bayerRG8, *rgb8);
  family.Process(*bayerRG8, *rgb8);
  EXPECT_THAT(TakeEvents(), ElementsAre("run BayerRG8 RGB8", "run BayerRG8 RGB8"));
}

TEST_F(ModuleWrappers, ReplaceTheInstanceWhenEitherFormatChanges) {
  BayerFamily family;
  family.Process(*bayerRG8, *rgb8);
  TakeEvents();
  family.Process(*bayerRG8, *bgr8);
  EXPECT_THAT(TakeEvents(), ElementsAre("make BayerRG8 BGR8", "end BayerRG8 RGB8", "run BayerRG8 BGR8"));
  family.Process(*bayerGR8, *bgr8);
  EXPECT_THAT(TakeEvents(), ElementsAre("make BayerGR8 BGR8", "end BayerRG8 BGR8", "run BayerGR8 BGR8"));
  family.Process(*bayerRG8, *rgb8);
  EXPECT_THAT(TakeEvents(), ElementsAre("make BayerRG8 RGB8", "end BayerGR8 BGR8", "run BayerRG8 RGB8"));
}

TEST_F(ModuleWrappers, MakeAnInstanceForThePairThatIsTheirPlaceholder) {
  TimedFamily family("Placeholder");
  TestImage output(BayerRG8, 2, 2);
  family.Process(*bayerRG8, *output);
  EXPECT_THAT(TakeEvents(), ElementsAre("make BayerRG8 BayerRG8", "run BayerRG8 BayerRG8"));
}

TEST_F(ModuleWrappers, StayUsableAfterAPairThatTheGridHasNot) {
  BayerFamily family;
  EXPECT_EQ(FailureOf([&] { family.Process(*mono8, *rgb8); }),
            (Failure{-1009, 9000, "Unsupported formatId: 17301505"}));
  EXPECT_THAT(TakeEvents(), IsEmpty());
  family.Process(*bayerRG8, *rgb8);
  EXPECT_THAT(TakeEvents(), ElementsAre("make BayerRG8 RGB8", "run BayerRG8 RGB8"));
  EXPECT_EQ(FailureOf([&] { family.Process(*bayerRG8, *mono8); }),
            (Failure{-1009, 9000, "Unsupported formatId: 17301513"}));
  EXPECT_THAT(TakeEvents(), IsEmpty()) << "the instance of the pair before stays";
  family.Process(*bayerRG8, *rgb8);
  EXPECT_THAT(TakeEvents(), ElementsAre("run BayerRG8 RGB8"));
}

TEST_F(ModuleWrappers, KeepTheInstanceWhenARunFails) {
  BayerFamily family;
  runsFail = true;
  EXPECT_THROW(family.Process(*bayerRG8, *rgb8), std::runtime_error);
  runsFail = false;
  TakeEvents();
  family.Process(*bayerRG8, *rgb8);
  EXPECT_THAT(TakeEvents(), ElementsAre("run BayerRG8 RGB8"));
}

TEST_F(ModuleWrappers, PassTheirParametersToEachNewInstance) {
  BayerFamilyWithParameters family;
  family.Process(*bayerRG8, *rgb8);
  EXPECT_EQ((PairModule<BayerRG8, RGB8>::parametersOfLastRun), &family.parameters);
  family.Process(*bayerGR8, *bgr8);
  EXPECT_EQ((PairModule<BayerGR8, BGR8>::parametersOfLastRun), &family.parameters);
}

TEST_F(ModuleWrappers, HaveNoParametersUnlessTheFamilyHas) {
  BayerFamily family;
  EXPECT_EQ(family.GetParameters(), nullptr);
  int block = 0;
  PairModule<BayerRG8, RGB8>::parametersOfLastRun = &block;
  family.Process(*bayerRG8, *rgb8);
  EXPECT_EQ((PairModule<BayerRG8, RGB8>::parametersOfLastRun), nullptr);
  int given = 0;
  family.SetParameters(&given);
  EXPECT_EQ(family.GetParameters(), &given);
}

TEST_F(ModuleWrappers, EndTheirInstanceWithThemselves) {
  {
    BayerFamily family;
    family.Process(*bayerRG8, *rgb8);
    TakeEvents();
  }
  EXPECT_THAT(TakeEvents(), ElementsAre("end BayerRG8 RGB8"));
}

TEST(ConversionModuleNotImplementedForFormat, DoesNothingAndSaysSo) {
  ConversionModuleNotImplementedForFormat module;
  const TestImage input(Mono8, 2, 1, korvel_test::Bytes{1, 2});
  const TestImage output(Mono8, 2, 1);
  module.Process(*input, *output);
  EXPECT_THAT(output.Content(), testing::Each(korvel_test::kUnwritten));
  const img::ImageArea area{{1, 2}, {3, 4}};
  EXPECT_EQ(module.GetOutputImageFormat({area, RGB12}), (ImageFormat{area, Invalid}));
  EXPECT_FALSE(module.IsInputFormatSupported(Mono8));
  EXPECT_FALSE(module.IsInputFormatSupported(Invalid));
  EXPECT_EQ(module.GetParameters(), nullptr);
}

TEST_F(ModuleWrappers, InstancesKnowTheirPair) {
  PairModule<BayerRG10, RGB10> module;
  EXPECT_TRUE(module.IsInputFormatSupported(BayerRG10));
  EXPECT_FALSE(module.IsInputFormatSupported(BayerRG8));
  EXPECT_FALSE(module.IsInputFormatSupported(RGB10));
  const img::ImageArea area{{1, 2}, {3, 4}};
  EXPECT_EQ(module.GetOutputImageFormat({area, BayerRG10}), (ImageFormat{area, RGB10}));
}

// ----------------------------------------------------------------------------------------------------------- timing --

ModuleTimingRecord RecordOf(const std::string& name) {
  return ModuleTimingRegistry::Instance().Records().at(ModuleTimingRegistry::Instance().IdOf(name));
}

bool HasRecord(const std::string& name) {
  for (const ModuleTimingRecord& record : ModuleTimingRegistry::Instance().Records()) {
    if (record.name == name) return true;
  }
  return false;
}

TEST_F(ModuleWrappers, OfConversionsTimeEachRunUnderTheirName) {
  EXPECT_FALSE(HasRecord("PM_Conversion::Timed family"));
  TimedFamily family("Timed family");
  EXPECT_TRUE(HasRecord("PM_Conversion::Timed family"));
  EXPECT_EQ(RecordOf("PM_Conversion::Timed family").count, 0u);
  family.Process(*bayerRG8, *rgb8);
  family.Process(*bayerRG8, *rgb8);
  TimedFamily sameName("Timed family");
  sameName.Process(*mono8, *rgb8);
  const ModuleTimingRecord record = RecordOf("PM_Conversion::Timed family");
  EXPECT_EQ(record.count, 3u);
  EXPECT_GE(record.maximum, record.minimum);
}

TEST_F(ModuleWrappers, OfConversionsTimeRunsThatFail) {
  TimedFamily family("Failing family");
  runsFail = true;
  EXPECT_THROW(family.Process(*bayerRG8, *rgb8), std::runtime_error);
  EXPECT_EQ(RecordOf("PM_Conversion::Failing family").count, 1u);
}

TEST_F(ModuleWrappers, OfConversionsFollowThePairLikeTheOthers) {
  TimedFamily family("Following family");
  family.Process(*bayerRG8, *rgb8);
  family.Process(*bayerRG8, *rgb8);
  EXPECT_THAT(TakeEvents(), ElementsAre("make BayerRG8 RGB8", "run BayerRG8 RGB8", "run BayerRG8 RGB8"));
  family.Process(*rgb8, *bayerRG8);
  EXPECT_THAT(TakeEvents(), ElementsAre("make RGB8 BayerRG8", "end BayerRG8 RGB8", "run RGB8 BayerRG8"));
  TestImage none(Invalid, 2, 2);
  EXPECT_EQ(FailureOf([&] { family.Process(*rgb8, *none); }), (Failure{-1009, 9000, "Unsupported formatId: 0"}));
  TakeEvents();
  family.Process(*rgb8, *bayerRG8);
  EXPECT_THAT(TakeEvents(), ElementsAre("run RGB8 BayerRG8"));
}

TEST_F(ModuleWrappers, OfMeasuresTimeRunsAlsoWhenTheyFail) {
  TemplateWrapper_MeasureModule<WidthModule, WidthIfc> measure("Width");
  EXPECT_EQ(measure.Process(*mono8, size_t{5}), 15u);
  EXPECT_EQ(measure.Process(*mono8, size_t{2}), 6u);
  EXPECT_THAT(TakeEvents(), ElementsAre("make Mono8", "run Mono8", "run Mono8"));
  EXPECT_EQ(measure.Process(*bayerRG8, size_t{1}), 2u);
  EXPECT_THAT(TakeEvents(), ElementsAre("make BayerRG8", "run BayerRG8"));
  runsFail = true;
  EXPECT_THROW(measure.Process(*mono8, size_t{5}), std::runtime_error);
  EXPECT_EQ(RecordOf("PM_Measure::Width").count, 4u);
}

// ------------------------------------------------------------------------------------------------------- one format --

TEST_F(ModuleWrappers, OfOneFormatKeepTheInstanceWhileTheFormatStays) {
  TemplateWrapper_InplaceProcessingModule<InplaceModule> module;
  const size_t records = ModuleTimingRegistry::Instance().Records().size();
  module.Process(*bayerRG8);
  EXPECT_THAT(TakeEvents(), ElementsAre("make BayerRG8", "run BayerRG8")) << "the placeholder has no instance";
  module.Process(*bayerRG8);
  module.Process(*mono8);
  EXPECT_THAT(TakeEvents(), ElementsAre("run BayerRG8", "make Mono8", "end BayerRG8", "run Mono8"));
  EXPECT_EQ(ModuleTimingRegistry::Instance().Records().size(), records) << "these aren't timed";
}

TEST_F(ModuleWrappers, OfTransformationsGoByTheInput) {
  TemplateWrapper_TransformationModule<TransformationModule, IfcTransformationProcessingModule> module;
  module.Process(*mono8, *rgb8);
  module.Process(*mono8, *bgr8);
  EXPECT_THAT(TakeEvents(), ElementsAre("make Mono8", "run Mono8 into RGB8", "run Mono8 into BGR8"));
  module.Process(*rgb8, *bgr8);
  EXPECT_THAT(TakeEvents(), ElementsAre("make RGB8", "run RGB8 into BGR8"));
}

TEST_F(ModuleWrappers, OfOneFormatTakeInvalidAsAFormat) {
  TemplateWrapper_InplaceProcessingModule<InplaceModule> module;
  TestImage none(Invalid, 2, 2);
  module.Process(*none);
  EXPECT_THAT(TakeEvents(), ElementsAre("make Invalid", "run Invalid"));
}

}  // namespace

// KORVEL_Histogram_*: the values of an image, counted.

#include "processing/measure/histogram.h"

#include "api/export_frame.h"
#include "api/format_checks.h"
#include "api/handle_registry.h"
#include "korvel/korvel.h"

using img::processing::HistogramRecord;
using korvel::internal::ExportFrame;
using korvel::internal::FindImage;
using korvel::internal::FromExported;
using korvel::internal::HandleRegistry;
using korvel::internal::kSuccess;
using korvel::internal::ToExported;

namespace {

std::shared_ptr<HistogramRecord> FindHistogram(KORVEL_HISTOGRAM_HANDLE histogramHandle) {
  return HandleRegistry::Instance().Histograms().Find(FromExported(histogramHandle));
}

}  // namespace

KORVEL_RETURN_CODE KORVEL_Histogram_Construct(KORVEL_IMAGE_HANDLE imageHandle,
                                              KORVEL_HISTOGRAM_HANDLE* histogramHandle) {
  return ExportFrame([&] {
    const auto image = FindImage(imageHandle);
    KORVEL_REQUIRE_HANDLE(image, imageHandle);
    KORVEL_REQUIRE_NOT_PACKED(image->Format(), "Histogram");
    KORVEL_REQUIRE_POINTER(histogramHandle);
    auto record = std::make_shared<HistogramRecord>();
    img::processing::Histogram().Process(*image->CreateImage(), *record);
    *histogramHandle =
        ToExported<KORVEL_HISTOGRAM_HANDLE>(HandleRegistry::Instance().Histograms().Add(std::move(record)));
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Histogram_GetPixelFormat(KORVEL_HISTOGRAM_HANDLE histogramHandle, uint32_t* pixelFormat) {
  return ExportFrame([&] {
    const auto histogram = FindHistogram(histogramHandle);
    KORVEL_REQUIRE_HANDLE(histogram, histogramHandle);
    KORVEL_REQUIRE_POINTER(pixelFormat);
    *pixelFormat = static_cast<uint32_t>(histogram->format);
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Histogram_GetNumChannels(KORVEL_HISTOGRAM_HANDLE histogramHandle, size_t* numChannels) {
  return ExportFrame([&] {
    const auto histogram = FindHistogram(histogramHandle);
    KORVEL_REQUIRE_HANDLE(histogram, histogramHandle);
    KORVEL_REQUIRE_POINTER(numChannels);
    *numChannels = histogram->channels.size();
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Histogram_GetPixelSumForChannel(KORVEL_HISTOGRAM_HANDLE histogramHandle, size_t channelIndex,
                                                          uint64_t* pixelSum) {
  return ExportFrame([&] {
    const auto histogram = FindHistogram(histogramHandle);
    KORVEL_REQUIRE_HANDLE(histogram, histogramHandle);
    KORVEL_REQUIRE_POINTER(pixelSum);
    KORVEL_REQUIRE_INDEX(histogram->channels, channelIndex);
    *pixelSum = histogram->channels[channelIndex].pixelSum;
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Histogram_GetPixelCountForChannel(KORVEL_HISTOGRAM_HANDLE histogramHandle,
                                                            size_t channelIndex, uint64_t* pixelCount) {
  return ExportFrame([&] {
    const auto histogram = FindHistogram(histogramHandle);
    KORVEL_REQUIRE_HANDLE(histogram, histogramHandle);
    KORVEL_REQUIRE_POINTER(pixelCount);
    KORVEL_REQUIRE_INDEX(histogram->channels, channelIndex);
    *pixelCount = histogram->channels[channelIndex].pixelCount;
    return kSuccess;
  });
}

KORVEL_RETURN_CODE KORVEL_Histogram_GetBinsForChannel(KORVEL_HISTOGRAM_HANDLE histogramHandle, size_t channelIndex,
                                                      uint64_t* bins, size_t* binsSize) {
  return ExportFrame([&] {
    const auto histogram = FindHistogram(histogramHandle);
    KORVEL_REQUIRE_HANDLE(histogram, histogramHandle);
    KORVEL_REQUIRE_POINTER(binsSize);
    KORVEL_REQUIRE_INDEX(histogram->channels, channelIndex);
    const auto& source = histogram->channels[channelIndex].bins;
    return korvel::internal::FillArray(source.data(), source.size(), bins, binsSize, "*bins is too small!");
  });
}

KORVEL_RETURN_CODE KORVEL_Histogram_Destruct(KORVEL_HISTOGRAM_HANDLE histogramHandle) {
  return ExportFrame([&] {
    const auto histogram = HandleRegistry::Instance().Histograms().Remove(FromExported(histogramHandle));
    KORVEL_REQUIRE_HANDLE(histogram, histogramHandle);
    return kSuccess;
  });
}

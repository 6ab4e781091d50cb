// Digital gain on mono and Bayer images: each value times a master gain and, at a Bayer site, the gain of its colour.
#pragma once

#include <memory>
#include <optional>

#include "buffers/buffer_pool.h"
#include "core/image.h"
#include "core/instruction_set.h"
#include "processing/correction/gain_vectors.h"
#include "processing/correction/value_tables.h"

namespace img::processing {

// A factor, and what it makes of each value.
struct GainTables {
  void Build(float newFactor);

  float factor = 1.0f;
  ValueTables tables;
  std::optional<FixedFactor> fixed;  // if there are integers that give all of the table of 8 bits
};

// The gains become tables when they are set. Where there are vectors, these multiply faster than a table is read, and
// leave it the rest of a line. Serves one thread at a time.
class Gain {
 public:
  explicit Gain(std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool,
                const ProcessorFeatures& features = ProcessorFeatures::OfThisProcessor());

  // Mono and Bayer, unpacked. False for an id that no format has.
  static bool IsFormatSupported(PixelFormatId format);

  // Throw InvalidArgument for a value outside Min() to Max(); the gain then stays as it was.
  void SetMasterGainValue(float value);
  void SetRedGainValue(float value);
  void SetGreenGainValue(float value);
  void SetBlueGainValue(float value);

  float GetMasterGainValue() const { return masterGain_; }
  float GetRedGainValue() const { return redGain_; }
  float GetGreenGainValue() const { return greenGain_; }
  float GetBlueGainValue() const { return blueGain_; }

  // The limits of all four gains.
  float Min() const { return gainMin_; }
  float Max() const { return gainMax_; }

  // The first makes a new image, from the pool. Both throw ImageFormatNotSupported.
  std::shared_ptr<IfcImage> applyGain(const IfcImage& image) const;
  void applyGainInPlace(IfcImage& image) const;

 private:
  void setColourGain(float& gain, GainTables& tables, float value, const char* location, const char* text);
  bool isNeutral() const;

  // input and output may be the same.
  void process(const IfcImage& input, IfcImage& output) const;

  float masterGain_ = 1.0f;
  float redGain_ = 1.0f;
  float greenGain_ = 1.0f;
  float blueGain_ = 1.0f;
  float gainMin_ = 1.0f;
  float gainMax_ = 8.0f;
  // Those of the colours contain the master gain.
  GainTables masterTables_;
  GainTables redTables_;
  GainTables greenTables_;
  GainTables blueTables_;
  std::shared_ptr<buffer::IfcMultiFormatBufferPool> pool_;
  InstructionSet set_;
};

}  // namespace img::processing

#include "core/format_dispatch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "status/exceptions.h"
#include "tests/support/failure.h"

namespace korvel_test {

using img::PixelFormatId;

// What is made here tells what it was made for.
class ProbeIfc {
 public:
  virtual ~ProbeIfc() = default;
  virtual std::pair<PixelFormatId, PixelFormatId> Ids() const = 0;
};

struct Label {
  int number = 0;
};

template <PixelFormatId formatId>
class OneIdProbe : public ProbeIfc {
 public:
  std::pair<PixelFormatId, PixelFormatId> Ids() const override { return {formatId, formatId}; }
};

template <PixelFormatId in, PixelFormatId out>
class TwoIdsProbe : public ProbeIfc {
 public:
  std::pair<PixelFormatId, PixelFormatId> Ids() const override { return {in, out}; }
};

// Keeps what its constructor was given.
class ArgumentProbeIfc {
 public:
  virtual ~ArgumentProbeIfc() = default;
  Label* labelGiven = nullptr;
  std::unique_ptr<Label> ownedLabel;
};

template <PixelFormatId formatId>
class OneIdArgumentProbe : public ArgumentProbeIfc {
 public:
  OneIdArgumentProbe(Label& label, std::unique_ptr<Label> owned) {
    labelGiven = &label;
    ownedLabel = std::move(owned);
  }
};

template <PixelFormatId in, PixelFormatId out>
class TwoIdsArgumentProbe : public ArgumentProbeIfc {
 public:
  TwoIdsArgumentProbe(Label& label, std::unique_ptr<Label> owned) {
    labelGiven = &label;
    ownedLabel = std::move(owned);
  }
};

template <PixelFormatId formatId>
class ThrowingProbe : public ProbeIfc {
 public:
  ThrowingProbe() { throw std::runtime_error("from the constructor"); }
  std::pair<PixelFormatId, PixelFormatId> Ids() const override { return {formatId, formatId}; }
};

}  // namespace korvel_test

KORVEL_NAME_TYPE_FOR_DISPATCH(korvel_test::ProbeIfc, "korvel_test::ProbeIfc");
KORVEL_NAME_TYPE_FOR_DISPATCH(korvel_test::ArgumentProbeIfc, "korvel_test::ArgumentProbeIfc");
KORVEL_NAME_TYPE_FOR_DISPATCH(korvel_test::Label, "korvel_test::Label");
KORVEL_NAME_TYPE_FOR_DISPATCH(std::unique_ptr<korvel_test::Label>, "std::unique_ptr<korvel_test::Label>");
KORVEL_NAME_FOR_DISPATCH(korvel_test::OneIdProbe, "OneIdProbe");
KORVEL_NAME_FOR_DISPATCH(korvel_test::OneIdArgumentProbe, "OneIdArgumentProbe");
KORVEL_NAME_FOR_DISPATCH(korvel_test::ThrowingProbe, "ThrowingProbe");
KORVEL_NAME_PAIR_FOR_DISPATCH(korvel_test::TwoIdsProbe, "TwoIdsProbe");
KORVEL_NAME_PAIR_FOR_DISPATCH(korvel_test::TwoIdsArgumentProbe, "TwoIdsArgumentProbe");

namespace {

using img::PixelFormatId;
using korvel::internal::ImgException;
using korvel::internal::ImgStatusCode;
using korvel_test::ArgumentProbeIfc;
using korvel_test::Label;
using korvel_test::LocatedFailure;
using korvel_test::LocatedFailureOf;
using korvel_test::OneIdArgumentProbe;
using korvel_test::OneIdProbe;
using korvel_test::ProbeIfc;
using korvel_test::ThrowingProbe;
using korvel_test::TwoIdsArgumentProbe;
using korvel_test::TwoIdsProbe;
using testing::ElementsAre;
using testing::IsEmpty;

using enum PixelFormatId;

using Ids = std::vector<PixelFormatId>;

const Ids kUnpackedBayer8 = {BayerGR8, BayerRG8, BayerGB8, BayerBG8};
const Ids kUnpackedBayer10 = {BayerGR10, BayerRG10, BayerGB10, BayerBG10};
const Ids kUnpackedBayer12 = {BayerGR12, BayerRG12, BayerGB12, BayerBG12};
const Ids kMipiBayer = {BayerRG10g40Qrv, BayerGB10g40Qrv, BayerGR10g40Qrv, BayerBG10g40Qrv,
                        BayerRG12g24Qrv, BayerGB12g24Qrv, BayerGR12g24Qrv, BayerBG12g24Qrv};

const Ids kEightBits = {Mono8, BayerGR8, BayerRG8, BayerGB8, BayerBG8, RGB8, BGR8, RGBa8, BGRa8};
const Ids kTenBits = {Mono10,          BayerGR10,       BayerRG10,   BayerGB10,  BayerBG10,       RGB10,
                      BGR10,           RGBa10,          BGRa10,      RGB10p32,   BGR10p32,        Mono10p,
                      BayerGR10p,      BayerRG10p,      BayerGB10p,  BayerBG10p, BayerRG10g40Qrv, BayerGB10g40Qrv,
                      BayerGR10g40Qrv, BayerBG10g40Qrv, Mono10g40Qrv};
const Ids kTwelveBits = {Mono12,          BayerGR12,       BayerRG12,       BayerGB12,   BayerBG12,
                         RGB12,           BGR12,           RGBa12,          BGRa12,      Mono12p,
                         BayerGR12p,      BayerRG12p,      BayerGB12p,      BayerBG12p,  BayerRG12g24Qrv,
                         BayerGB12g24Qrv, BayerGR12g24Qrv, BayerBG12g24Qrv, Mono12g24Qrv};

const Ids kRawIds = {_RawMipiPacked1Ch10,        _RawMipiPacked1Ch12, _RawUnpacked1Ch8,  _RawUnpacked1Ch10,
                     _RawUnpacked1Ch12,          _RawUnpacked3Ch8,    _RawUnpacked3Ch10, _RawUnpacked3Ch12,
                     _RawUnpacked4Ch8,           _RawUnpacked4Ch10,   _RawUnpacked4Ch12, _RawPackedNoAlignment1Ch10,
                     _RawPackedNoAlignment1Ch12, _RawPacked10p32};

// Gaps between known values, and values around the ranges.
const Ids kUnknownIds = {PixelFormatId{1},          PixelFormatId{0x01080002}, PixelFormatId{0x02400062},
                         PixelFormatId{0x40000010}, PixelFormatId{0x80000000}, PixelFormatId{0xFFFF0109},
                         PixelFormatId{0xFFFFFFFF}};

Ids Joined(std::initializer_list<Ids> lists) {
  Ids joined;
  for (const Ids& list : lists) joined.insert(joined.end(), list.begin(), list.end());
  return joined;
}

Ids PublicIds() { return Joined({kEightBits, kTenBits, kTwelveBits}); }

Ids AllIds() { return Joined({PublicIds(), {Invalid}, kRawIds, kUnknownIds}); }

bool Contains(const Ids& ids, PixelFormatId id) { return std::find(ids.begin(), ids.end(), id) != ids.end(); }

using Pair = std::pair<PixelFormatId, PixelFormatId>;

// The pairs that a dispatcher accepts, of all ids there are and some that there aren't.
template <class Make>
std::map<Pair, Pair> AcceptedPairs(Make make) {
  std::map<Pair, Pair> accepted;
  for (const PixelFormatId in : AllIds()) {
    for (const PixelFormatId out : AllIds()) {
      try {
        accepted[{in, out}] = make(in, out)->Ids();
      } catch (const ImgException& exception) {
        EXPECT_EQ(exception.GetStatus(), ImgStatusCode::InvalidParameterUtilx);
        EXPECT_EQ(exception.ModuleId(), 9000);
      }
    }
  }
  return accepted;
}

std::map<Pair, Pair> OfPublicIds(const std::map<Pair, Pair>& pairs) {
  std::map<Pair, Pair> found;
  for (const auto& entry : pairs) {
    if (Contains(PublicIds(), entry.first.first) && Contains(PublicIds(), entry.first.second)) found.insert(entry);
  }
  return found;
}

std::set<Pair> KeysOf(const std::map<Pair, Pair>& pairs) {
  std::set<Pair> keys;
  for (const auto& entry : pairs) keys.insert(entry.first);
  return keys;
}

void AddGrid(std::set<Pair>& pairs, const Ids& ins, const Ids& outs) {
  for (const PixelFormatId in : ins) {
    for (const PixelFormatId out : outs) pairs.insert({in, out});
  }
}

// The layout of each public format, by hand.
PixelFormatId LayoutOf(PixelFormatId id) {
  const std::pair<PixelFormatId, Ids> layouts[] = {
      {_RawUnpacked1Ch8, {Mono8, BayerGR8, BayerRG8, BayerGB8, BayerBG8}},
      {_RawUnpacked1Ch10, {Mono10, BayerGR10, BayerRG10, BayerGB10, BayerBG10}},
      {_RawUnpacked1Ch12, {Mono12, BayerGR12, BayerRG12, BayerGB12, BayerBG12}},
      {_RawUnpacked3Ch8, {RGB8, BGR8}},
      {_RawUnpacked3Ch10, {RGB10, BGR10}},
      {_RawUnpacked3Ch12, {RGB12, BGR12}},
      {_RawUnpacked4Ch8, {RGBa8, BGRa8}},
      {_RawUnpacked4Ch10, {RGBa10, BGRa10}},
      {_RawUnpacked4Ch12, {RGBa12, BGRa12}},
      {_RawPacked10p32, {RGB10p32, BGR10p32}},
      {_RawPackedNoAlignment1Ch10, {Mono10p, BayerGR10p, BayerRG10p, BayerGB10p, BayerBG10p}},
      {_RawPackedNoAlignment1Ch12, {Mono12p, BayerGR12p, BayerRG12p, BayerGB12p, BayerBG12p}},
      {_RawMipiPacked1Ch10, {Mono10g40Qrv, BayerGR10g40Qrv, BayerRG10g40Qrv, BayerGB10g40Qrv, BayerBG10g40Qrv}},
      {_RawMipiPacked1Ch12, {Mono12g24Qrv, BayerGR12g24Qrv, BayerRG12g24Qrv, BayerGB12g24Qrv, BayerBG12g24Qrv}},
  };
  for (const auto& [layout, ids] : layouts) {
    if (Contains(ids, id)) return layout;
  }
  return Invalid;
}

auto MakeOne(PixelFormatId id) { return img::MakeFormatClass<OneIdProbe, ProbeIfc>(id); }
auto MakePair(PixelFormatId in, PixelFormatId out) { return img::MakeFormatClass<TwoIdsProbe, ProbeIfc>(in, out); }
auto MakeRaw2Raw(PixelFormatId in, PixelFormatId out) {
  return img::MakeFormatClass_Raw2Raw<TwoIdsProbe, ProbeIfc>(in, out);
}
auto MakeSameBitDepth(PixelFormatId in, PixelFormatId out) {
  return img::MakeFormatClass_Raw2Raw_SameBitDepth<TwoIdsProbe, ProbeIfc>(in, out);
}
auto MakeBayer2Color(PixelFormatId in, PixelFormatId out) {
  return img::MakeFormatClass_Bayer2Color<TwoIdsProbe, ProbeIfc>(in, out);
}
auto MakeBayer2Mono(PixelFormatId in, PixelFormatId out) {
  return img::MakeFormatClass_Bayer2Mono<TwoIdsProbe, ProbeIfc>(in, out);
}

const std::string kOneIdLocation =
    "std::unique_ptr<TClassIfc> img::MakeFormatClass(img::PixelFormatId, Args...) [T = OneIdProbe, TClassIfc = "
    "korvel_test::ProbeIfc, Args = <>]";

std::string TwoIdsLocation(const std::string& dispatcher) {
  return "std::unique_ptr<TClassIfc> img::" + dispatcher +
         "(img::PixelFormatId, img::PixelFormatId, Args...) [T = TwoIdsProbe, TClassIfc = korvel_test::ProbeIfc, Args "
         "= <>]";
}

// ---------------------------------------------------------------------------------------------------------- one id --

TEST(MakeFormatClassOfOneId, MakesThe49PublicFormatsAndInvalid) {
  size_t made = 0;
  for (const PixelFormatId id : AllIds()) {
    if (LocatedFailureOf([&] { EXPECT_EQ(MakeOne(id)->Ids().first, id); })) continue;
    ++made;
    EXPECT_TRUE(id == Invalid || Contains(PublicIds(), id)) << static_cast<uint32_t>(id);
  }
  EXPECT_EQ(made, 50u);
}

TEST(MakeFormatClassOfOneId, RefusesEveryLayoutId) {
  for (const PixelFormatId id : kRawIds) EXPECT_THROW(MakeOne(id), ImgException) << static_cast<uint32_t>(id);
}

TEST(MakeFormatClassOfOneId, NamesTheIdThatItRefusesInUnsignedDecimal) {
  EXPECT_EQ(LocatedFailureOf([] { MakeOne(_RawUnpacked1Ch8); }),
            (LocatedFailure{-1009, 9000, kOneIdLocation, "Unsupported formatId: 4294902024"}));
  EXPECT_EQ(LocatedFailureOf([] { MakeOne(PixelFormatId{0x01080002}); }),
            (LocatedFailure{-1009, 9000, kOneIdLocation, "Unsupported formatId: 17301506"}));
  EXPECT_EQ(LocatedFailureOf([] { MakeOne(PixelFormatId{0xFFFFFFFF}); }),
            (LocatedFailure{-1009, 9000, kOneIdLocation, "Unsupported formatId: 4294967295"}));
}

TEST(MakeFormatClassOfOneId, PassesItsArgumentsOnUnchanged) {
  Label label;
  auto owned = std::make_unique<Label>();
  Label* const ownedAddress = owned.get();
  const auto made = img::MakeFormatClass<OneIdArgumentProbe, ArgumentProbeIfc>(Mono12p, label, std::move(owned));
  EXPECT_EQ(made->labelGiven, &label);
  EXPECT_EQ(made->ownedLabel.get(), ownedAddress);
  EXPECT_EQ(owned, nullptr);
}

TEST(MakeFormatClassOfOneId, LeavesItsArgumentsAloneWhenItRefuses) {
  Label label;
  auto owned = std::make_unique<Label>();
  const auto failure = LocatedFailureOf(
      [&] { img::MakeFormatClass<OneIdArgumentProbe, ArgumentProbeIfc>(_RawUnpacked1Ch8, label, std::move(owned)); });
  ASSERT_TRUE(failure.has_value());
  EXPECT_NE(owned, nullptr);
}

TEST(MakeFormatClassOfOneId, ListsTheTypesOfItsArgumentsInTheLocation) {
  Label label;
  const auto failure = LocatedFailureOf([&] {
    img::MakeFormatClass<OneIdArgumentProbe, ArgumentProbeIfc>(_RawUnpacked1Ch8, label, std::make_unique<Label>());
  });
  EXPECT_EQ(failure,
            (LocatedFailure{-1009, 9000,
                            "std::unique_ptr<TClassIfc> img::MakeFormatClass(img::PixelFormatId, Args...) [T = "
                            "OneIdArgumentProbe, TClassIfc = korvel_test::ArgumentProbeIfc, Args = "
                            "<korvel_test::Label, std::unique_ptr<korvel_test::Label>>]",
                            "Unsupported formatId: 4294902024"}));
}

TEST(MakeFormatClassOfOneId, LetsTheFailureOfAConstructorThrough) {
  try {
    img::MakeFormatClass<ThrowingProbe, ProbeIfc>(Mono8);
    FAIL() << "nothing was thrown";
  } catch (const std::runtime_error& exception) {
    EXPECT_STREQ(exception.what(), "from the constructor");
  }
}

// --------------------------------------------------------------------------------------------------- the full grid --

TEST(MakeFormatClassOfTwoIds, MakesEveryPairOfPublicFormatsAndNoOther) {
  const auto accepted = AcceptedPairs(MakePair);
  EXPECT_EQ(accepted.size(), 2401u);
  EXPECT_EQ(OfPublicIds(accepted).size(), 2401u);
  for (const auto& [asked, made] : accepted) EXPECT_EQ(asked, made);
}

TEST(MakeFormatClassOfTwoIds, RefusesInvalidAsEitherId) {
  const std::string location = TwoIdsLocation("MakeFormatClass");
  EXPECT_EQ(LocatedFailureOf([] { MakePair(Invalid, Mono8); }),
            (LocatedFailure{-1009, 9000, location, "Unsupported formatId: 0"}));
  EXPECT_EQ(LocatedFailureOf([] { MakePair(Mono8, Invalid); }),
            (LocatedFailure{-1009, 9000, location, "Unsupported formatId: 0"}));
}

TEST(MakeFormatClassOfTwoIds, NamesTheSecondIdIfTheFirstIsGood) {
  EXPECT_EQ(LocatedFailureOf([] { MakePair(Mono8, PixelFormatId{0x01080002}); }),
            (LocatedFailure{-1009, 9000, TwoIdsLocation("MakeFormatClass"), "Unsupported formatId: 17301506"}));
}

TEST(MakeFormatClassOfTwoIds, NamesTheFirstIdIfBothAreBad) {
  EXPECT_EQ(LocatedFailureOf([] { MakePair(PixelFormatId{7}, PixelFormatId{0x01080002}); }),
            (LocatedFailure{-1009, 9000, TwoIdsLocation("MakeFormatClass"), "Unsupported formatId: 7"}));
  EXPECT_EQ(LocatedFailureOf([] { MakePair(_RawUnpacked1Ch8, Invalid); }),
            (LocatedFailure{-1009, 9000, TwoIdsLocation("MakeFormatClass"), "Unsupported formatId: 4294902024"}));
}

TEST(MakeFormatClassOfTwoIds, PassesItsArgumentsOnUnchanged) {
  Label label;
  auto owned = std::make_unique<Label>();
  Label* const ownedAddress = owned.get();
  const auto made = img::MakeFormatClass<TwoIdsArgumentProbe, ArgumentProbeIfc>(RGB8, Mono12p, label, std::move(owned));
  EXPECT_EQ(made->labelGiven, &label);
  EXPECT_EQ(made->ownedLabel.get(), ownedAddress);
}

// ------------------------------------------------------------------------------------------------ layout to layout --

TEST(MakeFormatClassRaw2Raw, MakesEveryPairOfPublicFormats) {
  EXPECT_EQ(OfPublicIds(AcceptedPairs(MakeRaw2Raw)).size(), 2401u);
}

TEST(MakeFormatClassRaw2Raw, MakesTheClassOfTheLayouts) {
  for (const auto& [asked, made] : OfPublicIds(AcceptedPairs(MakeRaw2Raw))) {
    EXPECT_EQ(made, Pair(LayoutOf(asked.first), LayoutOf(asked.second)));
  }
}

TEST(MakeFormatClassRaw2Raw, TakesLayoutIdsAsTheyStand) {
  // 49 public and 14 layout ids on each side.
  const auto accepted = AcceptedPairs(MakeRaw2Raw);
  EXPECT_EQ(accepted.size(), 63u * 63u);
  EXPECT_EQ(accepted.at(Pair(_RawUnpacked4Ch10, _RawMipiPacked1Ch12)), Pair(_RawUnpacked4Ch10, _RawMipiPacked1Ch12));
}

TEST(MakeFormatClassRaw2Raw, NamesTheFirstLayoutInEveryFailure) {
  const std::string location = TwoIdsLocation("MakeFormatClass_Raw2Raw");
  EXPECT_EQ(LocatedFailureOf([] { MakeRaw2Raw(Invalid, Mono8); }),
            (LocatedFailure{-1009, 9000, location, "Unsupported formatId: 0"}));
  EXPECT_EQ(LocatedFailureOf([] { MakeRaw2Raw(Mono8, Invalid); }),
            (LocatedFailure{-1009, 9000, location, "Unsupported formatId: 4294902024"}));
  EXPECT_EQ(LocatedFailureOf([] { MakeRaw2Raw(BayerGB10p, Invalid); }),
            (LocatedFailure{-1009, 9000, location, "Unsupported formatId: 4294906122"}));
}

TEST(MakeFormatClassRaw2Raw, CannotReduceAnUnknownId) {
  const std::string location = "PixelFormatId img::PixelFormatInfo_RawFormat(PixelFormatId)";
  EXPECT_EQ(LocatedFailureOf([] { MakeRaw2Raw(Mono8, PixelFormatId{0x01080002}); }),
            (LocatedFailure{-1009, 9000, location, "Unknown formatId: 17301506"}));
  EXPECT_EQ(LocatedFailureOf([] { MakeRaw2Raw(PixelFormatId{7}, PixelFormatId{0x01080002}); }),
            (LocatedFailure{-1009, 9000, location, "Unknown formatId: 7"}));
}

TEST(MakeFormatClassRaw2RawSameBitDepth, MakesTheThreeGroupsAndNoOther) {
  std::set<Pair> expected;
  AddGrid(expected, kEightBits, kEightBits);
  AddGrid(expected, kTenBits, kTenBits);
  AddGrid(expected, kTwelveBits, kTwelveBits);
  ASSERT_EQ(expected.size(), 883u);
  EXPECT_EQ(KeysOf(OfPublicIds(AcceptedPairs(MakeSameBitDepth))), expected);
}

TEST(MakeFormatClassRaw2RawSameBitDepth, MakesTheClassOfTheLayouts) {
  for (const auto& [asked, made] : OfPublicIds(AcceptedPairs(MakeSameBitDepth))) {
    EXPECT_EQ(made, Pair(LayoutOf(asked.first), LayoutOf(asked.second)));
  }
}

TEST(MakeFormatClassRaw2RawSameBitDepth, TakesPackedAndUnpackedAlike) {
  EXPECT_EQ(MakeSameBitDepth(Mono10p, RGB10)->Ids(), Pair(_RawPackedNoAlignment1Ch10, _RawUnpacked3Ch10));
}

TEST(MakeFormatClassRaw2RawSameBitDepth, NamesTheFirstLayoutInEveryFailure) {
  const std::string location = TwoIdsLocation("MakeFormatClass_Raw2Raw_SameBitDepth");
  EXPECT_EQ(LocatedFailureOf([] { MakeSameBitDepth(BayerRG8, Mono10); }),
            (LocatedFailure{-1009, 9000, location, "Unsupported formatId: 4294902024"}));
  EXPECT_EQ(LocatedFailureOf([] { MakeSameBitDepth(Mono10, BayerRG8); }),
            (LocatedFailure{-1009, 9000, location, "Unsupported formatId: 4294902026"}));
  EXPECT_EQ(LocatedFailureOf([] { MakeSameBitDepth(Mono8, Invalid); }),
            (LocatedFailure{-1009, 9000, location, "Unsupported formatId: 4294902024"}));
  EXPECT_EQ(LocatedFailureOf([] { MakeSameBitDepth(Invalid, Invalid); }),
            (LocatedFailure{-1009, 9000, location, "Unsupported formatId: 0"}));
}

// ---------------------------------------------------------------------------------------------------------- Bayer --

TEST(MakeFormatClassBayer2Color, Makes56PairsOfOneDepthAndNoOther) {
  std::set<Pair> expected;
  AddGrid(expected, kUnpackedBayer8, {RGB8, BGR8, RGBa8, BGRa8});
  AddGrid(expected, kUnpackedBayer10, {RGB10p32, BGR10p32, RGB10, BGR10, BGRa10, RGBa10});
  AddGrid(expected, kUnpackedBayer12, {RGB12, BGR12, BGRa12, RGBa12});
  ASSERT_EQ(expected.size(), 56u);
  const auto accepted = AcceptedPairs(MakeBayer2Color);
  EXPECT_EQ(KeysOf(accepted), expected);
  for (const auto& [asked, made] : accepted) EXPECT_EQ(asked, made);
}

TEST(MakeFormatClassBayer2Color, NamesTheFirstIdInEveryFailure) {
  const std::string location = TwoIdsLocation("MakeFormatClass_Bayer2Color");
  EXPECT_EQ(LocatedFailureOf([] { MakeBayer2Color(BayerRG10, RGB8); }),
            (LocatedFailure{-1009, 9000, location, "Unsupported formatId: 17825805"}));
  EXPECT_EQ(LocatedFailureOf([] { MakeBayer2Color(BayerRG10p, RGB10); }),
            (LocatedFailure{-1009, 9000, location, "Unsupported formatId: 17432664"}));
  EXPECT_EQ(LocatedFailureOf([] { MakeBayer2Color(BayerRG10, PixelFormatId{7}); }),
            (LocatedFailure{-1009, 9000, location, "Unsupported formatId: 17825805"}));
  EXPECT_EQ(LocatedFailureOf([] { MakeBayer2Color(PixelFormatId{7}, RGB8); }),
            (LocatedFailure{-1009, 9000, location, "Unsupported formatId: 7"}));
}

TEST(MakeFormatClassBayer2Mono, Makes28PairsOfOneLayoutAndNoOther) {
  std::set<Pair> expected;
  AddGrid(expected, kUnpackedBayer8, {Mono8});
  AddGrid(expected, kUnpackedBayer10, {Mono10});
  AddGrid(expected, kUnpackedBayer12, {Mono12});
  AddGrid(expected, kMipiBayer, {Mono10g40Qrv, Mono12g24Qrv});
  ASSERT_EQ(expected.size(), 28u);
  const auto accepted = AcceptedPairs(MakeBayer2Mono);
  EXPECT_EQ(KeysOf(accepted), expected);
  for (const auto& [asked, made] : accepted) EXPECT_EQ(asked, made);
}

TEST(MakeFormatClassBayer2Mono, NamesTheFirstIdInEveryFailure) {
  const std::string location = TwoIdsLocation("MakeFormatClass_Bayer2Mono");
  EXPECT_EQ(LocatedFailureOf([] { MakeBayer2Mono(BayerRG10p, Mono10p); }),
            (LocatedFailure{-1009, 9000, location, "Unsupported formatId: 17432664"}));
  EXPECT_EQ(LocatedFailureOf([] { MakeBayer2Mono(Mono8, Mono8); }),
            (LocatedFailure{-1009, 9000, location, "Unsupported formatId: 17301505"}));
  EXPECT_EQ(LocatedFailureOf([] { MakeBayer2Mono(BayerRG10, Invalid); }),
            (LocatedFailure{-1009, 9000, location, "Unsupported formatId: 17825805"}));
}

}  // namespace

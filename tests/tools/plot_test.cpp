#include "tools/plot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "tools/terminal_plot.h"

namespace korvel::tools {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

TEST(RoundTicks, AreRoundNumbersWithinTheAxis) {
  EXPECT_THAT(RoundTicks(0, 255, 8), ElementsAre(0, 50, 100, 150, 200, 250));
  EXPECT_THAT(RoundTicks(17, 52, 8), ElementsAre(20, 25, 30, 35, 40, 45, 50));
  EXPECT_THAT(RoundTicks(0, 4095, 8), ElementsAre(0, 1000, 2000, 3000, 4000));
}

TEST(RoundTicks, AreWholeNumbersOnShortAxes) {
  EXPECT_THAT(RoundTicks(0, 2, 8), ElementsAre(0, 1, 2));
  EXPECT_THAT(RoundTicks(5, 5, 8), ElementsAre(5));
}

TEST(HeightOf, IsInProportionOnALinearAxis) {
  const Plot plot{.greatest_value = 200};
  EXPECT_EQ(HeightOf(0, plot), 0);
  EXPECT_EQ(HeightOf(50, plot), 0.25);
  EXPECT_EQ(HeightOf(200, plot), 1);
}

TEST(HeightOf, TellsOneFromNothingOnALogarithmicAxis) {
  const Plot plot{.logarithmic = true, .greatest_value = 1000};
  EXPECT_EQ(HeightOf(0, plot), 0);
  EXPECT_DOUBLE_EQ(HeightOf(1, plot), 0.25);
  EXPECT_DOUBLE_EQ(HeightOf(10, plot), 0.5);
  EXPECT_DOUBLE_EQ(HeightOf(1000, plot), 1);
}

TEST(HeightOf, IsTheLowerEndWithoutAnyValue) { EXPECT_EQ(HeightOf(0, Plot{}), 0); }

TEST(ValueTicks, ArePowersOfTenOnALogarithmicAxis) {
  EXPECT_THAT(ValueTicks({.logarithmic = true, .greatest_value = 1500}, 5), ElementsAre(0, 1, 10, 100, 1000));
  EXPECT_THAT(ValueTicks({.greatest_value = 1500}, 5), ElementsAre(0, 500, 1000, 1500));
}

TEST(TickText, HasNoNeedlessDigits) {
  EXPECT_EQ(TickText(0), "0");
  EXPECT_EQ(TickText(12000000), "12000000");
  EXPECT_EQ(TickText(2.5), "2.5");
}

Series TwoValues(Colour colour, size_t first_place) {
  return {.name = std::string(NameOfColour(colour)),
          .remark = "",
          .colour = colour,
          .places = {first_place, first_place + 2},
          .values = {8, 4}};
}

TEST(AsCsv, LeavesCellsEmptyWhereASeriesHasNoValue) {
  const Plot plot{.series = {TwoValues(Colour::kRed, 0), TwoValues(Colour::kGreen, 1)}};
  EXPECT_EQ(AsCsv(plot, "column"), "column,red,green\n0,8,\n1,,8\n2,4,\n3,,4\n");
}

TEST(PrintPlot, DrawsEachSeriesWithItsAxes) {
  const Plot plot{.title = "a title",
                  .place_label = "places",
                  .value_label = "values",
                  .style = PlotStyle::kBars,
                  .last_place = 2,
                  .series = {TwoValues(Colour::kRed, 0)}};
  std::ostringstream out;
  PrintPlot(out, plot, 80, false);
  // The place in the middle has no value and takes that before it.
  EXPECT_EQ(out.str(),
            "a title\nvalues over places\n\nred\n"
            "        8 ┤██ \n"
            "          │██ \n"
            "          │██ \n"
            "          │███\n"
            "          │███\n"
            "        0 ┤███\n"
            "           0 2\n");
}

TEST(PrintPlot, UsesColoursWhereItMay) {
  const Plot plot{.last_place = 2, .greatest_value = 8, .series = {TwoValues(Colour::kBlue, 0)}};
  std::ostringstream with;
  std::ostringstream without;
  PrintPlot(with, plot, 80, true);
  PrintPlot(without, plot, 80, false);
  EXPECT_THAT(with.str(), HasSubstr("\033[34m"));
  EXPECT_THAT(without.str(), Not(HasSubstr("\033")));
}

TEST(PrintPlot, IsNoWiderThanItsColumns) {
  const Plot plot{.style = PlotStyle::kBars, .last_place = 99, .series = {TwoValues(Colour::kGrey, 0)}};
  const auto bars = [&](size_t columns) {
    std::ostringstream out;
    PrintPlot(out, plot, columns, false);
    const std::string text = out.str();
    const std::string last_row = text.substr(text.find("        0 ┤") + std::string("        0 ┤").size());
    return last_row.find('\n') / std::string("█").size();
  };
  EXPECT_EQ(bars(80), 64);
  EXPECT_EQ(bars(40), 29);
  EXPECT_EQ(bars(1), 8);  // less says nothing
}

}  // namespace
}  // namespace korvel::tools

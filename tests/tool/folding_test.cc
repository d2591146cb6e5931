// Lines that are wider than a terminal.
#include "output/folding.h"

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>

#include "output/colours.h"
#include "output/standard_output.h"

namespace tool {

namespace {

std::string folded(const std::string& text, size_t width) {
    std::ostringstream out;
    { FoldedOutput(out, width) << text; }
    return out.str();
}

}  // namespace

TEST(Folding, LinesThatFitStayAsTheyAre) {
    EXPECT_EQ(folded("0123456789\n\n  a   b  \n", 10), "0123456789\n\n  a   b  \n");
    EXPECT_EQ(folded("a line of many words\n", SIZE_MAX), "a line of many words\n");
}

TEST(Folding, WiderOnesAreBrokenAtBlanksAndIndentedFurther) {
    EXPECT_EQ(folded("ab cd ef gh ij\n", 6), "ab cd\n  ef\n  gh\n  ij\n");
    EXPECT_EQ(folded("  ab cd ef gh ij\n", 9), "  ab cd\n    ef gh\n    ij\n");
    EXPECT_EQ(folded("a b\n", 0), "a\nb\n");
    EXPECT_EQ(folded("ab    cd\n", 7), "ab\n  cd\n");
    EXPECT_EQ(folded("äö üé\n", 5), "äö üé\n");
    EXPECT_EQ(folded("äö üé\n", 4), "äö\n  üé\n");
}

TEST(Folding, TheLinesOfATreeGoOn) {
    EXPECT_EQ(folded("│  ├─ Sales  The sales department\n", 20),
              "│  ├─ Sales  The\n│  │    sales\n│  │    department\n");
    EXPECT_EQ(folded("└─ Sales  The sales\n", 14), "└─ Sales  The\n     sales\n");
    EXPECT_EQ(leadBelow("│  ├─ A ├─"), "│  │  ");
    EXPECT_EQ(leadBelow("   └─ A"), "      ");
}

TEST(Folding, AWordIsIndentedLessWhereItFitsThenAndIsNeverCut) {
    EXPECT_EQ(folded("    someone@sales.example\n", 22), " someone@sales.example\n");
    EXPECT_EQ(folded("│  │  ├─ someone@sales\n", 16), "│  │  ├─\n│  someone@sales\n");
    EXPECT_EQ(folded("  to someone@sales.example today\n", 10), "  to\nsomeone@sales.example\n    today\n");
}

TEST(Folding, BlanksAtTheEndMakeNoLine) {
    EXPECT_EQ(folded("ab cd     \n", 6), "ab cd\n");
    EXPECT_EQ(folded("ab cd     \nef\n", 4), "ab\n  cd\nef\n");
    EXPECT_EQ(folded("│  ab     \n", 6), "│  ab\n");
    const std::string painted = Colours(true).paint("ab     ", Tone::Good);
    EXPECT_EQ(folded(painted + "\n", 4), Colours(true).paint("ab", Tone::Good) + "\n");
}

TEST(Folding, ALineThatDoesNotEndIsPrinted) {
    EXPECT_EQ(folded("ab\ncd", 6), "ab\ncd");
    EXPECT_EQ(folded("ab cd ef", 6), "ab cd\n  ef");
    EXPECT_EQ(folded("ab\n", 6), "ab\n");
}

TEST(Folding, TheEndOfAnOutputPrintsWhatIsBegun) {
    std::ostringstream out;
    FoldedOutput output(out, 6);
    output << "ab" << std::flush;
    EXPECT_EQ(out.str(), "");
    output.finish();
    EXPECT_EQ(out.str(), "ab");
    output.finish();
    EXPECT_EQ(out.str(), "ab");
}

TEST(Folding, AReportPrintsWhatIsBegun) {
    std::ostringstream out;
    std::streambuf* const original = std::cout.rdbuf(out.rdbuf());
    reportOutput(OutputFormat::Text) << "a\nb";
    finishOutput();
    std::cout.rdbuf(original);
    EXPECT_EQ(out.str(), "a\nb");
}

TEST(Folding, ColoursTakeNoColumns) {
    const std::string text = Colours(true).paint("ab cd", Tone::Good) + " ef";
    EXPECT_EQ(folded(text + "\n", 8), text + "\n");
    EXPECT_EQ(folded(text + "\n", 7), Colours(true).paint("ab cd", Tone::Good) + "\n  ef\n");
}

TEST(Folding, AnOutputThatFailsIsToldOf) {
    std::ostringstream out;
    FoldedOutput output(out, 10);
    EXPECT_TRUE(output << "a\n" << std::flush);
    out.setstate(std::ios::badbit);
    EXPECT_FALSE(output << "b\n");
}

}  // namespace tool

#include "OstrelReader.h"
#include "AmplitudeLibrary.h"
#include "ConstraintLibrary.h"
#include "ControlSet.h"
#include "ElementLibrary.h"
#include "LoggerLibrary.h"
#include "MaterialLibrary.h"
#include "Node.h"
#include "ReaderLibrary.h"
#include "TestUtil.h"
#include "TrackerLibrary.h"
#include "Writer.h"
#include "WriterLibrary.h"

#include <gtest/gtest.h>
#include <stdexcept>

using namespace testutil;

namespace {
std::shared_ptr<OstrelReader> readerFor(const std::string& name, const std::string& deck) {
    const fs::path dir = scratchDir("reader_" + name);
    auto reader = std::make_shared<OstrelReader>();
    reader->init(writeFile(dir / (name + ".txt"), deck));
    return reader;
}

// Message of the outermost exception and of its nested causes, joined by " | ".
std::string chain(const std::exception& e) {
    std::string text = e.what();
    try {
        std::rethrow_if_nested(e);
    } catch (const std::exception& inner) {
        text += " | " + chain(inner);
    }
    return text;
}

template <class F> std::string errorOf(F&& f) {
    try {
        f();
    } catch (const std::exception& e) {
        return chain(e);
    }
    return "no error";
}
} // namespace

TEST(DeckCounts, SeveralBlocksOfOneKindAddUpAndCommentsAndBlanksDoNotCount) {
    auto r = readerFor("counts", "TITLE\n** comment\nNODES\n1 X 0\n\n** inside\n2 X 1\n"
                                 "MATERIALS TYPE ELASTIC\nSTEEL E 1 NU 0.3 RHO 1\nnodes\n3 x 2\n"
                                 "GEOMETRY\n4 X 3\nCONTROLS\nSTEP 1\nRUN FROM 0 TO 1\n");
    EXPECT_EQ(r->numberOfNodes(), 3);
    EXPECT_EQ(r->numberOfMaterials(), 1);
    EXPECT_EQ(r->numberOfControls(), 2);
    EXPECT_EQ(r->numberOfElements(), 0);
    EXPECT_EQ(r->getNumberOfLines(), 16);

    r->rewindFile();
    std::vector<int> numbers;
    for (int i = 0; i < 3; ++i)
        numbers.push_back(r->getNextNode({}, {})->getNumber());
    EXPECT_EQ(numbers, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(r->getCurrentLine(), 11);
}

TEST(DeckCounts, NodesKeepTheirCoordinatesAndRewindStartsAgainAtLineOne) {
    auto r = readerFor("coords", "NODES\n7 X 1.5 Y -2 Z 3E-1\n");
    r->rewindFile();
    auto n = r->getNextNode({}, {});
    EXPECT_EQ(n->getNumber(), 7);
    EXPECT_DOUBLE_EQ(n->getX_pos(), 1.5);
    EXPECT_DOUBLE_EQ(n->getY_pos(), -2.0);
    EXPECT_DOUBLE_EQ(n->getZ_pos(), 0.3);
    r->rewindFile();
    EXPECT_EQ(r->getCurrentLine(), 0);
    EXPECT_EQ(r->getNextNode({}, {})->getNumber(), 7);
    EXPECT_EQ(r->getCurrentLine(), 2);
}

TEST(DeckHeaders, TypedHeadersAreCheckedWithTheirLineNumbers) {
    auto r = readerFor("headers", "TITLE\n\n\n\n\n\nELEMENTS\n1 NODES 1 2\n");
    r->rewindFile();
    EXPECT_EQ(errorOf([&] { r->getNextElement({}, {}, {}, {}); }),
              "At line 7 not enough arguments for element block");

    r = readerFor("headers2", "TITLE\n\n\n\n\n\nELEMENTS ROD_2\n1 NODES 1 2\n");
    r->rewindFile();
    EXPECT_EQ(errorOf([&] { r->getNextElement({}, {}, {}, {}); }), "At line 7 TYPE label is missing");

    r = readerFor("headers3", "TITLE\n\nAMPLITUDES TABLE X\nRAMP VALUES 0 0 1 1\n");
    r->rewindFile();
    EXPECT_EQ(errorOf([&] { r->getNextAmplitude(); }), "At line 3 TYPE label is missing for amplitude block");

    r = readerFor("headers4", "CONSTRAINTS\nFIX VX 0\n");
    r->rewindFile();
    EXPECT_EQ(errorOf([&] { r->getNextConstraint({}, {}); }),
              "At line 1 not enough arguments for constraint block");

    r = readerFor("headers5", "MATERIALS\nSTEEL\n");
    r->rewindFile();
    EXPECT_EQ(errorOf([&] { r->getNextMaterial(); }), "At line 1 not enough arguments for material block");

    r = readerFor("headers6", "TRACKERS X\nT1 NODES 1\n");
    r->rewindFile();
    EXPECT_EQ(errorOf([&] { r->getNextTracker({}, {}); }), "At line 1 TYPE label is missing");
}

TEST(DeckHeaders, UnknownTypeNamesAreWrappedWithTheLine) {
    auto r = readerFor("unknown", "TITLE\nELEMENTS TYPE ROD2\n1 NODES 1 2\n");
    r->rewindFile();
    EXPECT_EQ(errorOf([&] { r->getNextElement({}, {}, {}, {}); }),
              "At line 3 | Element Type ROD2 is not recognized");
}

TEST(DeckLines, NumberOutOfRangeNamesTheLineAndTheValue) {
    auto r = readerFor("range", "NODES\n1 X 1E999\n");
    r->rewindFile();
    EXPECT_EQ(errorOf([&] { r->getNextNode({}, {}); }), "At line 2 | Number 1E999 is out of range");
}

TEST(DeckLines, NodeParseErrorsAreNotWrapped) {
    auto r = readerFor("nodeerr", "NODES\n1 X A\n");
    r->rewindFile();
    EXPECT_EQ(errorOf([&] { r->getNextNode({}, {}); }), "Input X is not recognized");
    r = readerFor("nodeerr2", "NODES\n1 CONSTRAINT FIX\n");
    r->rewindFile();
    EXPECT_EQ(errorOf([&] { r->getNextNode({}, {}); }), "Constraint name FIX is not found");
    r = readerFor("nodeerr3", "NODES\n1 LOAD G\n");
    r->rewindFile();
    EXPECT_EQ(errorOf([&] { r->getNextNode({}, {}); }), "Load name G is not found");
}

TEST(DeckLines, ControlLinesFeedOneControlSet) {
    auto r = readerFor("controls", "CONTROLS\nRUN FROM 0 TO 3\nSTEP 0.5\n");
    std::unique_ptr<ControlSet> c;
    const int count = r->numberOfControls();
    r->rewindFile();
    for (int i = 0; i < count; ++i)
        r->getControlSet(c);
    ASSERT_TRUE(c);
    EXPECT_DOUBLE_EQ(c->getEndTime(), 3.0);
    EXPECT_DOUBLE_EQ(c->getTimeStep(), 0.5);
}

TEST(Factories, UnknownKeywordsGiveTheirMessages) {
    EXPECT_EQ(errorOf([] { ReaderLibrary::getReader(".inp"); }), "Extension.inp is not recognized");
    EXPECT_EQ(errorOf([] { ReaderLibrary::getReader(".TXT"); }), "Extension.TXT is not recognized");
    EXPECT_EQ(errorOf([] { LoggerLibrary::getLogger(".MD"); }), "Extension.MD is not recognized for loggers");
    EXPECT_EQ(errorOf([] { ElementLibrary::getElementOstrel("ROD2"); }),
              "Element Type ROD2 is not recognized");
    EXPECT_EQ(errorOf([] { MaterialLibrary::getMaterialOstrel("Elastic"); }),
              "Material Type Elastic is not recognized");
    EXPECT_EQ(errorOf([] { ConstraintLibrary::getConstraintOstrel("BC"); }),
              "Constraint Type BC is not recognized");
    EXPECT_EQ(errorOf([] { AmplitudeLibrary::getAmplitudeOstrel("SMOOTH"); }),
              "Amplitude Type SMOOTH is not recognized");
    EXPECT_EQ(errorOf([] { TrackerLibrary::getTrackerOstrel("NODES"); }),
              "Tracker Type NODES is not recognized");
    EXPECT_EQ(errorOf([] { WriterLibrary::getWriterOstrel("vtk"); }), "Writer Type vtk is not recognized");
}

TEST(Factories, EachCallMakesADistinctObject) {
    auto a = ReaderLibrary::getReader(".txt");
    auto b = ReaderLibrary::getReader(".txt");
    EXPECT_NE(a.get(), b.get());
    EXPECT_NE(std::dynamic_pointer_cast<OstrelReader>(a), nullptr);
    EXPECT_EQ(WriterLibrary::getWriterOstrel("VTK")->getType(), "VTK");
}

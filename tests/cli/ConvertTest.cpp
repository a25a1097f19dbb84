#include "Program.h"

#include <gmock/gmock.h>

#include <sstream>

namespace {

using namespace Vesk::Test;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

class Convert : public WithTraces {};

TEST_F(Convert, ThereAndBackIsTheSame) {
    const std::string table = path("t.csv");
    const std::string back = path("back.jsonl");
    const Outcome outcome = run({"convert", traces, table});
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out, "36 traces written to " + table + "\n");
    ASSERT_TRUE(succeeded(run({"convert", table, back})));

    const std::vector<std::string> before = lines(readFile(traces));
    const std::vector<std::string> after = lines(readFile(back));
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < before.size(); ++i) {
        for (const char* key : {"gesture", "user", "points"}) {
            EXPECT_EQ(json::parse(after[i])[key], json::parse(before[i])[key]);
        }
    }
    EXPECT_THAT(namesIn(path("")), ElementsAre("back.jsonl", "t.csv", "traces.jsonl"));
}

TEST_F(Convert, TakesSeveralFilesAndStandardStreams) {
    ASSERT_TRUE(succeeded(run({"convert", traces, path("t.csv")})));
    const Outcome both = run({"convert", traces, path("t.csv"), "-"});
    EXPECT_TRUE(succeeded(both));
    EXPECT_EQ(lines(both.out).size(), 72U);
    const Outcome piped = run({"convert", "-", "-", "--to", "csv"}, readFile(traces));
    EXPECT_TRUE(succeeded(piped));
    EXPECT_EQ(piped.out, readFile(path("t.csv")));
}

TEST_F(Convert, TakesTheTracesThatWereAskedForAndFlipsThem) {
    writeFile(path("two.csv"),
              "gesture,user,trace,x,y\na,u,1,1,2\na,u,1,3,-4\nb,v,2,5,6\nb,v,2,7,8\n");
    const Outcome outcome = run({"convert", path("two.csv"), "-", "--user", "u", "--flip-y"});
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out,
              "{\"gesture\":\"a\",\"user\":\"u\",\"points\":[[1.0,-2.0],[3.0,4.0]]}\n");
}

TEST_F(Convert, RefusesBadInputAndLeavesNothing) {
    EXPECT_TRUE(refused(run({"convert", traces}), 2, "expected TRACES and the file to write"));
    EXPECT_TRUE(refused(run({"convert", traces, path("x"), "--to", "xml"}), 2,
                        "found xml, expected one of jsonl|csv"));
    writeFile(path("bad.jsonl"), readFile(traces) + "{\"points\": 3}\n");
    EXPECT_TRUE(refused(run({"convert", path("bad.jsonl"), path("out.jsonl")}), 3, ":37: "));
    EXPECT_TRUE(refused(run({"convert", traces, path("no/folder.csv")}), 1, "no/folder.csv"));
    EXPECT_THAT(namesIn(path("")), ElementsAre("bad.jsonl", "traces.jsonl"));
}

class Export : public WithTraces {};

TEST_F(Export, WritesTheNodeOfAModel) {
    const std::string scene = path("g.wrl");
    const std::string file = model();
    const Outcome outcome = run({"export", file, "-o", scene});
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out, "node of 3 gestures written to " + scene + "\n");
    EXPECT_EQ(lines(readFile(scene))[0], "#VRML V2.0 utf8");

    const Outcome piped = run({"export", "-", "-o", "-"}, readFile(file));
    EXPECT_TRUE(succeeded(piped));
    EXPECT_EQ(piped.out, readFile(scene));
}

/// The first words of a node's lines with as many tabs as given, up to its end.
std::vector<std::string> fieldsOf(const std::string& text, const std::string& node, int tabs) {
    std::vector<std::string> fields;
    const std::string indented(static_cast<std::size_t>(tabs), '\t');
    for (const std::string& line : lines(text.substr(text.find(node)))) {
        if (line.rfind(indented, 0) != 0 && !fields.empty()) break;
        const std::size_t begin = line.find_first_not_of('\t');
        if (begin == indented.size() && line[begin] != ']')
            fields.push_back(line.substr(begin, line.find(' ') - begin));
    }
    return fields;
}

/// The names of the fields that a prototype declares, in their order.
std::vector<std::string> declaredFields(const std::string& text, const std::string& prototype) {
    std::vector<std::string> fields;
    for (const std::string& line : lines(text.substr(text.find("PROTO " + prototype)))) {
        if (line[0] == ']') break;
        std::istringstream words(line);
        std::string field, type, name;
        if (words >> field >> type >> name && field == "field") fields.push_back(name);
    }
    return fields;
}

TEST_F(Export, PrototypesDeclareEveryFieldOfTheNodes) {
    const std::string file = model();
    const std::string plain = run({"export", file, "-o", "-"}).out;
    const Outcome outcome = run({"export", file, "-o", "-", "--with-prototypes"});
    EXPECT_TRUE(succeeded(outcome));

    // The header stays the first line, the node what it is.
    const std::size_t header = plain.find('\n') + 1;
    const std::string& text = outcome.out;
    ASSERT_GT(text.size(), plain.size());
    EXPECT_EQ(text.substr(0, header), plain.substr(0, header));
    EXPECT_EQ(text.substr(text.size() - (plain.size() - header)), plain.substr(header));

    EXPECT_EQ(declaredFields(text, "RecognitionModel"), fieldsOf(plain, "RecognitionModel {", 1));
    EXPECT_EQ(declaredFields(text, "Gesture"), fieldsOf(plain, "\t\tGesture {", 3));
    EXPECT_EQ(declaredFields(text, "RecognitionModel").size(), 14U);
    EXPECT_EQ(declaredFields(text, "Gesture").size(), 8U);
}

TEST_F(Export, RefusesWhatIsNoModelAndLeavesNothing) {
    EXPECT_TRUE(refused(run({"export", traces, "-o", path("g.wrl")}), 3, traces + ":1: "));
    EXPECT_TRUE(refused(run({"export", path("none"), "-o", path("g.wrl")}), 3, "no such file"));
    EXPECT_TRUE(refused(run({"export", model()}), 2, "--output"));
    EXPECT_THAT(namesIn(path("")), testing::Not(testing::Contains("g.wrl")));
}

}  // namespace

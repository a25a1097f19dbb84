#include "Requests.h"

#include <veskkit/Error.h>
#include <veskkit/diagnosis/Doctor.h>
#include <veskkit/io/AtomicFile.h>
#include <veskkit/io/TraceFiles.h>
#include <veskkit/io/TraceText.h>
#include <veskkit/synthesis/TraceSynthesizer.h>

#include <cstdint>
#include <cstdio>

namespace Vesk::Studio {

namespace {

constexpr std::size_t mostProblems = 20;

/// A file of that name without its folders, as long as the object lives, in the working folder:
/// names and extensions say how a file of traces is read.
class NamedFile {
public:
    NamedFile(std::string wanted, const std::string& bytes)
        : name(wanted.substr(wanted.find_last_of('/') + 1)) {
        name = name.substr(0, name.find('\0'));
        if (name.empty() || name[0] == '.') name.insert(0, "traces");
        Kit::writeWhole(name, bytes);
    }
    ~NamedFile() { std::remove(name.c_str()); }
    NamedFile(const NamedFile&) = delete;
    NamedFile& operator=(const NamedFile&) = delete;

    std::string name;
};

}  // namespace

/// "users", "repetitions", "seed", "gestures" (all where there are none): "traces", and in "known"
/// the names of all gestures.
Answer starterSet(const Call& call) {
    const Kit::TraceSynthesizer synthesizer(call.arguments.value("seed", std::uint64_t{1}));
    auto names = call.arguments.value("gestures", std::vector<std::string>());
    if (names.empty()) names = Kit::TraceSynthesizer::gestures();
    Json traces = Json::array();
    for (int user = 1; user <= call.arguments.value("users", 1); ++user) {
        for (const std::string& name : names) {
            for (int i = 1; i <= call.arguments.value("repetitions", 1); ++i)
                traces.push_back(traceJson(synthesizer.draw(name, user, i)));
        }
    }
    return {{{"traces", traces}, {"known", Kit::TraceSynthesizer::gestures()}}};
}

/// A file and its "name": "traces", with "flipY" those of a set whose y axis points upwards turned
/// over; and in "problems" what was refused. The first twenty of them; a file of which nothing can
/// be read is an error.
Answer readTraces(const Call& call) {
    const NamedFile file(call.arguments.value("name", ""), call.file);
    Kit::TraceFiles reader({file.name});
    const bool flipY = call.arguments.value("flipY", false);
    Json traces = Json::array();
    std::vector<std::string> problems;
    for (bool more = true; more && problems.size() < mostProblems;) {
        try {
            Kit::Trace trace;
            more = reader.next(trace);
            if (more) {
                Kit::requireUsablePoints(trace);
                for (auto& point : trace.points) point[1] = flipY ? -point[1] : point[1];
                traces.push_back(traceJson(trace));
            }
        } catch (const Kit::InputError& problem) {
            problems.emplace_back(problem.what());
        }
    }
    if (traces.empty() && !problems.empty()) throw Kit::InputError(problems.front());
    return {{{"traces", traces}, {"problems", problems}}};
}

/// "traces" as a file of JSON Lines.
Answer writeTraces(const Call& call) {
    Answer answer;
    for (const Kit::Trace& trace : tracesOf(call.arguments.at("traces")))
        answer.file += Kit::jsonLine(trace);
    return answer;
}

/// "traces": "findings", whose traces are places in the list.
Answer diagnoseTraces(const Call& call) {
    Kit::DoctorOptions options;
    options.training.threads = 1;
    options.crossValidation = call.arguments.value("thorough", true);
    const auto findings = Kit::diagnose(tracesOf(call.arguments.at("traces")), options,
                                        [&](double share) { call.tell(share); });
    return {{{"findings", findingsJson(findings)}}};
}

}  // namespace Vesk::Studio

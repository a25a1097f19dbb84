#include <veskkit/diagnosis/internal/Examination.h>
#include <veskkit/internal/Text.h>
#include <veskkit/recognition/ModelCheck.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace Vesk::Kit::internal {

namespace {

using Labels = std::vector<std::string>;

constexpr std::size_t fewestExamples = 3;
constexpr std::size_t enoughExamples = 10;
constexpr std::size_t unevenness = 4;

/// "\"Circle\", \"circle\""
std::string listed(const Labels& labels) {
    std::string text;
    for (const std::string& label : labels) text += (text.empty() ? "" : ", ") + quoted(label);
    return text;
}

/// The label in small letters without blanks and underscores; the label itself where it is one
/// character, since letters are gestures too, or nothing would be left.
std::string withoutCaseAndBlanks(const std::string& label) {
    if (label.size() < 2) return label;
    std::string key;
    for (const char c : storedName(label)) {
        if (c != '_') key += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return key.empty() ? label : key;
}

std::set<std::string> labelsOf(const Examination& examination) {
    std::set<std::string> labels;
    for (std::size_t i = 0; i < examination.traces.size(); ++i) {
        if (!examination.marked[i]) labels.insert(examination.traces[i].gesture);
    }
    return labels;
}

/// Labels in groups that the function gives one key.
template <typename Key>
std::map<std::string, Labels> grouped(const std::set<std::string>& labels, const Key& key) {
    std::map<std::string, Labels> groups;
    for (const std::string& label : labels) groups[key(label)].push_back(label);
    return groups;
}

void add(Examination& examination, FindingKind kind, Weight weight, Labels gestures,
         std::string text, std::string advice) {
    Finding finding{kind, weight};
    finding.gestures = std::move(gestures);
    finding.text = std::move(text);
    finding.advice = std::move(advice);
    examination.findings.push_back(std::move(finding));
}

void findMissing(Examination& examination) {
    Finding finding{FindingKind::MissingLabel, Weight::Serious};
    for (std::size_t i = 0; i < examination.traces.size(); ++i) {
        if (!examination.traces[i].gesture.empty()) continue;
        finding.traces.push_back(examination.place(i));
        examination.marked[i] = true;
    }
    if (finding.traces.empty()) return;
    const std::size_t count = finding.traces.size();
    finding.found = static_cast<double>(count);
    finding.expected = 0.0;
    finding.text =
        joined(examination.described(finding.traces.front().trace),
               count > 1 ? joined(" and ", count - 1, count == 2 ? " other" : " others") : "",
               ": found no label, expected the gesture's name");
    finding.advice = "Name the gesture of every trace, or leave these out: training refuses them.";
    examination.findings.push_back(std::move(finding));
}

void findUnstorable(Examination& examination) {
    std::set<std::string> told;
    for (std::size_t i = 0; i < examination.traces.size(); ++i) {
        const std::string& label = examination.traces[i].gesture;
        if (label.empty() || isStorableName(storedName(label))) continue;
        examination.marked[i] = true;
        if (!told.insert(label).second) continue;
        add(examination, FindingKind::UnstorableLabel, Weight::Serious, {label},
            joined("gesture ", quoted(label), ": found control characters in the label"),
            "Rename it: a model file cannot hold such a name, and training refuses it.");
    }
}

/// The places of the traces of every label.
using Gestures = std::map<std::string, std::vector<std::size_t>>;

void examineCount(Examination& examination, const std::string& gesture, std::size_t count,
                  double median) {
    Finding finding{FindingKind::FewExamples, Weight::Advice};
    double least = static_cast<double>(enoughExamples);
    if (count < fewestExamples) {
        finding.weight = Weight::Serious;
        least = static_cast<double>(fewestExamples);
        finding.advice = "Record more: so few say nothing of how the gesture varies.";
    } else if (count < enoughExamples) {
        finding.advice =
            "Record more, best by several people: recognition gains most up to about twenty.";
    } else if (static_cast<double>(count * unevenness) < median) {
        finding.kind = FindingKind::UnevenExamples;
        least = median / static_cast<double>(unevenness);
        finding.advice =
            joined("Record more of it: half of the gestures have ", median, " traces or more.");
    } else {
        return;
    }
    finding.gestures = {gesture};
    finding.found = static_cast<double>(count);
    finding.expected = least;
    finding.text = joined("gesture ", quoted(gesture), ": found ", count,
                          count == 1 ? " trace" : " traces", ", expected at least ", least);
    examination.findings.push_back(std::move(finding));
}

std::set<std::string> usersOf(const Examination& examination,
                              const std::vector<std::size_t>& places) {
    std::set<std::string> users;
    for (const std::size_t i : places) users.insert(examination.traces[i].user);
    return users;
}

void examineUsers(Examination& examination, const Gestures& gestures) {
    std::set<std::string> all;
    for (const auto& [gesture, places] : gestures) all.merge(usersOf(examination, places));
    // Who drew is known of all traces or not at all.
    if (all.count("") > 0) return;
    if (all.size() == 1) {
        add(examination, FindingKind::SingleUser, Weight::Advice, {},
            joined("found traces of one user, ", quoted(*all.begin()), ", expected several"),
            "Let others draw too, unless nobody else will use the model.");
        return;
    }
    for (const auto& [gesture, places] : gestures) {
        const std::set<std::string> users = usersOf(examination, places);
        if (users.size() > 1 || places.size() < fewestExamples) continue;
        add(examination, FindingKind::SingleUser, Weight::Advice, {gesture},
            joined("gesture ", quoted(gesture), ": found traces of one user, ",
                   quoted(*users.begin()), ", expected several"),
            "Let the others draw it too: their hands may differ.");
    }
}

}  // namespace

void examineLabels(Examination& examination) {
    findMissing(examination);
    findUnstorable(examination);
    const std::set<std::string> labels = labelsOf(examination);
    for (const auto& [name, group] : grouped(labels, storedName)) {
        if (group.size() > 1) {
            add(examination, FindingKind::CollidingLabels, Weight::Serious, group,
                joined("gestures ", listed(group), ": found ", group.size(),
                       " labels that a model holds as ", quoted(name)),
                "Give them one label, or different ones: training refuses them as they are.");
        } else if (group.front() != name) {
            add(examination, FindingKind::RenamedLabel, Weight::Advice, group,
                joined("gesture ", quoted(group.front()), ": found blanks in the label"),
                joined("Expect it as ", quoted(name),
                       " from the model, or rename it: names in a model are single words."));
        }
    }
    for (const auto& [key, group] : grouped(labels, withoutCaseAndBlanks)) {
        std::set<std::string> names;
        for (const std::string& label : group) names.insert(storedName(label));
        if (names.size() < 2) continue;
        add(examination, FindingKind::SimilarLabels, Weight::Warning, group,
            joined("gestures ", listed(group),
                   ": found labels that differ in case, blanks or underscores only"),
            "Give them one label if they are one gesture: now they are trained against one "
            "another.");
    }
}

void examineCounts(Examination& examination) {
    Gestures gestures;
    for (std::size_t i = 0; i < examination.traces.size(); ++i) {
        const Trace& trace = examination.traces[i];
        if (!trace.gesture.empty() && isStorableName(storedName(trace.gesture)))
            gestures[trace.gesture].push_back(i);
    }
    if (gestures.empty()) return;
    std::vector<double> counts;
    for (const auto& [gesture, places] : gestures)
        counts.push_back(static_cast<double>(places.size()));
    const double median = medianOf(counts);
    for (const auto& [gesture, places] : gestures)
        examineCount(examination, gesture, places.size(), median);
    examineUsers(examination, gestures);
}

}  // namespace Vesk::Kit::internal

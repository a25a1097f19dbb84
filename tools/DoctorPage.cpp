#include "DoctorPage.h"

#include "ModelPage.h"
#include "Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <map>

namespace Vesk::Tool {

namespace {

using Findings = std::vector<const Kit::Finding*>;

constexpr std::size_t mostStrokes = 60;  ///< of one kind of finding

/// The heading of a section.
std::string headingOf(Kit::Weight weight) {
    switch (weight) {
        case Kit::Weight::Serious: return "Serious";
        case Kit::Weight::Warning: return "Warnings";
        case Kit::Weight::Advice: break;
    }
    return "Advice";
}

/// "few examples"
std::string wordsOf(Kit::FindingKind kind) {
    std::string words = Kit::toString(kind);
    std::replace(words.begin(), words.end(), '-', ' ');
    return words;
}

Kit::Table tableOf(const Findings& findings) {
    Kit::Table table{counted(findings.size(), "finding"), {{"found"}, {"what to do about it"}}, {}};
    for (const Kit::Finding* finding : findings) {
        table.rows.push_back({finding->text, finding->advice});
    }
    return table;
}

Kit::Figure overlaidMeans(const Kit::Finding& finding, const Kit::StrokeStyle& style) {
    std::vector<Kit::NamedStroke> strokes;
    std::string names;
    for (const Kit::MeanTrace& mean : finding.means) {
        strokes.push_back({mean.gesture, mean.points});
        names += (names.empty() ? "" : " and ") + mean.gesture;
    }
    return {Kit::strokesPlot("How " + names + " are drawn on average", strokes, style), names};
}

/// The traces that findings about one trace, or copies of one, are about.
std::vector<Kit::Figure> strokesOf(const Findings& findings, const std::vector<Kit::Trace>& traces,
                                   const Kit::StrokeStyle& style) {
    std::vector<Kit::Figure> figures;
    for (const Kit::Finding* finding : findings) {
        if (finding->traces.empty() || !finding->means.empty()) continue;
        const Kit::Trace& trace = traces[finding->traces.front().trace];
        const std::string caption = fmt::format("{} ({})", trace.gesture, originOf(trace));
        figures.push_back({Kit::strokesPlot(wordsOf(finding->kind) + ": " + caption,
                                            {{trace.gesture, trace.points}}, style),
                           caption});
    }
    return figures;
}

void addKind(Kit::Page& page, const Findings& findings, const std::vector<Kit::Trace>& traces,
             const Kit::StrokeStyle& style) {
    page.part(wordsOf(findings.front()->kind));
    page.table(tableOf(findings));
    std::vector<Kit::Figure> means;
    for (const Kit::Finding* finding : findings) {
        if (!finding->means.empty()) means.push_back(overlaidMeans(*finding, style));
    }
    if (!means.empty()) page.gallery(means);
    const Findings drawn(findings.begin(), findings.begin() + static_cast<std::ptrdiff_t>(std::min(
                                                                  findings.size(), mostStrokes)));
    const std::vector<Kit::Figure> strokes = strokesOf(drawn, traces, style);
    if (strokes.empty()) return;
    page.gallery(strokes);
    if (drawn.size() < findings.size()) {
        page.paragraph(fmt::format("The first {} of {} are drawn.", drawn.size(), findings.size()));
    }
}

}  // namespace

Kit::Page doctorPage(const std::string& summary, const std::vector<Kit::Finding>& findings,
                     const std::vector<Kit::Trace>& traces, const Kit::StrokeStyle& style) {
    std::map<Kit::Weight, std::map<Kit::FindingKind, Findings>> groups;
    for (const Kit::Finding& finding : findings) {
        groups[finding.weight][finding.kind].push_back(&finding);
    }
    Kit::Page page("Findings of the doctor");
    page.section("Overview");
    page.paragraph(summary);
    for (const auto& [weight, kinds] : groups) {
        page.section(headingOf(weight));
        for (const auto& [kind, group] : kinds) addKind(page, group, traces, style);
    }
    return page;
}

}  // namespace Vesk::Tool

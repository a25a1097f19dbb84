#include <veskkit/report/Colours.h>

#include <veskkit/report/internal/Colours.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace Vesk::Kit {

namespace {

struct Colour {
    const char* name;
    const char* light;
    const char* dark;
};

/// In OKLCH (B. Ottosson, "A perceptual color space for image processing", 2020): chroma 0.19 or
/// what sRGB has; light page: lightness 0.28 to 0.66, hue 275 to 415 degrees; dark page: 0.58 to
/// 0.94, 275 to 455.
constexpr Colour states[internal::stateColours] = {
    {"s0", "#1c017c", "#5e69e8"}, {"s1", "#350185", "#8867eb"},  {"s2", "#4d0189", "#ad67e5"},
    {"s3", "#650188", "#cf68d8"}, {"s4", "#7c0782", "#ec6ac6"},  {"s5", "#920d78", "#fd79ae"},
    {"s6", "#a7156c", "#fd929e"}, {"s7", "#ba205d", "#fda799"},  {"s8", "#ca2f4a", "#fdb99a"},
    {"s9", "#d74031", "#ffca9c"}, {"s10", "#de5608", "#fedba4"}, {"s11", "#da720d", "#ffeba1"}};

/// Blue, vermilion, green and purple, which all kinds of colour blindness tell apart (M. Okabe,
/// K. Ito, "Color Universal Design", 2008), darker or lighter where a page needs it.
constexpr Colour series[] = {{"c0", "#0062a3", "#5fb8f0"},
                             {"c1", "#c24e00", "#ff9d5c"},
                             {"c2", "#00785a", "#3fcfa3"},
                             {"c3", "#a3477f", "#e79fca"}};
constexpr const char* dashes[] = {"none", "6 3", "2 3", "8 3 2 3"};

constexpr Colour amount = {"amount", "#0062a3", "#5fb8f0"};
constexpr Colour onAmount = {"on-amount", "#ffffff", "#0b0f14"};
constexpr Colour error = {"error", "#c24e00", "#ff9d5c"};

std::string variable(const Colour& colour) {
    return fmt::format("var(--vesk-{},{})", colour.name, colour.light);
}

template <typename Use>
void forAll(const Use& use) {
    for (const Colour& colour : states) use(colour);
    for (const Colour& colour : series) use(colour);
    for (const Colour& colour : {amount, onAmount, error}) use(colour);
}

}  // namespace

std::string plotColours() {
    std::string light;
    std::string dark;
    forAll([&](const Colour& colour) {
        light += fmt::format("--vesk-{}:{};", colour.name, colour.light);
        dark += fmt::format("--vesk-{}:{};", colour.name, colour.dark);
    });
    return fmt::format(
        ":root{{{}}}\n@media screen and (prefers-color-scheme:dark){{:root{{{}}}}}\n", light, dark);
}

namespace internal {

std::string stateColour(int i, int N) {
    const double place = N > 1 ? static_cast<double>(i) / (N - 1) : 0.0;
    const auto step = static_cast<int>(std::lround(place * (stateColours - 1)));
    return variable(states[std::clamp(step, 0, stateColours - 1)]);
}

std::string seriesColour(std::size_t k) { return variable(series[k % std::size(series)]); }

std::string seriesDashes(std::size_t k) { return dashes[k % std::size(dashes)]; }

std::string amountColour() { return variable(amount); }

std::string onAmountColour() { return variable(onAmount); }

std::string errorColour() { return variable(error); }

}  // namespace internal

}  // namespace Vesk::Kit

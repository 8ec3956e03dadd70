#include "TerminalEmulator/Engine/DeviceColor.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>

// X11's device-independent colour spaces (XParseColor(3), Xlib chapter 6) on a display that has no characterisation
// of its own: the matrix of Xlib's default monitor, and its intensities as measured from XParseColor.

namespace vt
{

namespace
{

struct Vector {
    double x;
    double y;
    double z;
};

struct Chromaticity {
    double u;
    double v;
    double y;
};

struct Level {
    int value;
    double intensity;
};

constexpr Level Red[] = {
    {9, 0.000000},   {10, 0.000940},  {15, 0.001481},  {20, 0.002330},  {25, 0.003529},  {30, 0.005128},
    {35, 0.007170},  {40, 0.009700},  {45, 0.012761},  {50, 0.016394},  {55, 0.020639},  {60, 0.025535},
    {65, 0.031163},  {70, 0.037482},  {75, 0.044502},  {80, 0.052389},  {85, 0.061123},  {90, 0.070653},
    {95, 0.081094},  {100, 0.092490}, {105, 0.104779}, {110, 0.118080}, {115, 0.132324}, {120, 0.147631},
    {125, 0.163985}, {130, 0.181391}, {135, 0.199901}, {140, 0.219511}, {145, 0.240221}, {150, 0.262087},
    {155, 0.285101}, {160, 0.309322}, {165, 0.334686}, {170, 0.361257}, {175, 0.389027}, {180, 0.417997},
    {185, 0.448167}, {190, 0.479593}, {195, 0.512267}, {200, 0.546137}, {205, 0.581263}, {210, 0.617582},
    {215, 0.655158}, {220, 0.694038}, {225, 0.734051}, {230, 0.775383}, {235, 0.817902}, {240, 0.861622},
    {245, 0.906542}, {250, 0.952718}, {255, 1.000000},
};
constexpr Level Green[] = {
    {19, 0.000000},  {20, 0.000836},  {25, 0.001998},  {30, 0.003613},  {35, 0.005737},  {40, 0.008429},
    {45, 0.011747},  {50, 0.015742},  {55, 0.020465},  {60, 0.025962},  {65, 0.032282},  {70, 0.039469},
    {75, 0.047559},  {80, 0.056549},  {85, 0.066495},  {90, 0.077445},  {95, 0.089451},  {100, 0.102450},
    {105, 0.116506}, {110, 0.131666}, {115, 0.147870}, {120, 0.165237}, {125, 0.183640}, {130, 0.203151},
    {135, 0.223817}, {140, 0.245576}, {145, 0.268436}, {150, 0.292340}, {155, 0.317407}, {160, 0.343455},
    {165, 0.370616}, {170, 0.398765}, {175, 0.427971}, {180, 0.458114}, {185, 0.489210}, {190, 0.521199},
    {195, 0.554089}, {200, 0.587823}, {205, 0.622353}, {210, 0.657627}, {215, 0.693653}, {220, 0.730261},
    {225, 0.767527}, {230, 0.805275}, {235, 0.843525}, {240, 0.882219}, {245, 0.921198}, {250, 0.960534},
    {255, 1.000000},
};
constexpr Level Blue[] = {
    {14, 0.000000},  {15, 0.001347},  {20, 0.002080},  {25, 0.003189},  {30, 0.004730},  {35, 0.006767},
    {40, 0.009358},  {45, 0.012561},  {50, 0.016426},  {55, 0.021006},  {60, 0.026347},  {65, 0.032517},
    {70, 0.039498},  {75, 0.047389},  {80, 0.056179},  {85, 0.065925},  {90, 0.076675},  {95, 0.088425},
    {100, 0.101175}, {105, 0.114981}, {110, 0.129891}, {115, 0.145845}, {120, 0.162962}, {125, 0.181115},
    {130, 0.200432}, {135, 0.220841}, {140, 0.242351}, {145, 0.264961}, {150, 0.288727}, {155, 0.313530},
    {160, 0.339441}, {165, 0.366451}, {170, 0.394450}, {175, 0.423506}, {180, 0.453610}, {185, 0.484599},
    {190, 0.516600}, {195, 0.549544}, {200, 0.583328}, {205, 0.617964}, {210, 0.653393}, {215, 0.689567},
    {220, 0.726493}, {225, 0.764056}, {230, 0.802216}, {235, 0.840920}, {240, 0.880120}, {245, 0.919764},
    {250, 0.959748}, {255, 1.000000},
};

constexpr Vector ToRed{3.48340481253539000, -1.52176374927285200, -0.55923133354049780};
constexpr Vector ToGreen{-1.07152751306193600, 1.96593795204372400, 0.03673691339553462};
constexpr Vector ToBlue{0.06351179790497788, -0.20020501000496480, 0.81070942031648220};
constexpr Vector White{0.9496644, 1.0, 1.4060403};
constexpr double ChromaScale = 7.50725;            // TekHVC
constexpr Chromaticity BestRed{0.7127, 0.4931, 1}; // TekHVC counts hues from it

double dot(const Vector &a, const Vector &b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

Vector linear(const Vector &xyz)
{
    return {dot(ToRed, xyz), dot(ToGreen, xyz), dot(ToBlue, xyz)};
}

Chromaticity chromaticity(const Vector &xyz)
{
    const double sum = xyz.x + 15 * xyz.y + 3 * xyz.z;
    return sum != 0 ? Chromaticity{4 * xyz.x / sum, 9 * xyz.y / sum, xyz.y} : Chromaticity{0, 0, xyz.y};
}

Vector fromChromaticity(const Chromaticity &c)
{
    const double v = c.v != 0 ? c.v : 1e-9;
    return {9 * c.u * c.y / (4 * v), c.y, c.y * (12 - 3 * c.u - 20 * v) / (4 * v)};
}

double lightness(double y)
{
    return y < 0.008856 ? 903.29 * y : 116 * std::cbrt(y) - 16;
}

double luminance(double l)
{
    return l < 7.99953624 ? l / 903.29 : std::pow((l + 16) / 116, 3);
}

double hueOffset()
{
    const Chromaticity white = chromaticity(White);
    return std::atan2(BestRed.v - white.v, BestRed.u - white.u);
}

/// Hue in radians, value from 0 to 100, chroma.
Chromaticity fromHvc(double hue, double value, double chroma)
{
    const Chromaticity white = chromaticity(White);
    if (value <= 0) {
        return {white.u, white.v, 0};
    }
    const double reach = chroma / (value * ChromaScale);
    return {white.u + std::cos(hue + hueOffset()) * reach, white.v + std::sin(hue + hueOffset()) * reach,
            luminance(value)};
}

bool isInside(const Vector &rgb)
{
    const auto good = [](double part) { return part >= -1e-7 && part <= 1 + 1e-7; };
    return good(rgb.x) && good(rgb.y) && good(rgb.z);
}

/// The linear intensities of a colour. One that the display cannot show keeps hue and value and loses chroma.
Vector clipped(const Chromaticity &c)
{
    if (c.y >= 1) {
        return {1, 1, 1};
    }
    const Vector rgb = linear(fromChromaticity(c));
    if (isInside(rgb)) {
        return rgb;
    }
    const Chromaticity white = chromaticity(White);
    const double hue = std::atan2(c.v - white.v, c.u - white.u) - hueOffset();
    const double value = lightness(c.y);
    double low = 0;
    double high = std::min(value * ChromaScale * std::hypot(c.u - white.u, c.v - white.v), 1000.0);
    for (int step = 0; step < 50; ++step) {
        const double middle = (low + high) / 2;
        (isInside(linear(fromChromaticity(fromHvc(hue, value, middle)))) ? low : high) = middle;
    }
    const Vector edge = linear(fromChromaticity(fromHvc(hue, value, low)));
    return {std::max(edge.x, 1e-7), std::max(edge.y, 1e-7), std::max(edge.z, 1e-7)};
}

template<size_t Count>
uint16_t level(const Level (&levels)[Count], double intensity)
{
    if (!(intensity > 0)) {
        return 0;
    }
    const Level *above = std::lower_bound(std::begin(levels), std::end(levels), intensity,
                                          [](const Level &each, double value) { return each.intensity < value; });
    if (above == std::end(levels)) {
        return 0xffff;
    }
    double value = above->value;
    if (above != std::begin(levels)) {
        const Level &below = above[-1];
        value = below.value +
                (intensity - below.intensity) / (above->intensity - below.intensity) * (above->value - below.value);
    }
    return static_cast<uint16_t>(std::lround(value) * 0x101);
}

Vector fromLab(double l, double a, double b)
{
    if (l < 7.99953624) {
        // Xlib's scale for dark colours is a hundredfold of the standard's.
        const double y = l / 9.0329;
        return {White.x * (a / 3893.5 + y), y, White.z * (y - b / 1557.4)};
    }
    const double root = (l + 16) / 116;
    return {White.x * std::pow(a / 5 + root, 3), std::pow(root, 3), White.z * std::pow(root - b / 2, 3)};
}

Chromaticity fromLuv(double l, double u, double v)
{
    const Chromaticity white = chromaticity(White);
    const double scale = 13 * l / 100;
    return scale != 0 ? Chromaticity{u / scale + white.u, v / scale + white.v, luminance(l)}
                      : Chromaticity{white.u, white.v, 0};
}

} // namespace

std::optional<DeepColor> deviceColor(std::string_view space, double a, double b, double c)
{
    Vector rgb{};
    if (space == "rgbi") {
        rgb = {a, b, c};
    } else if (space == "ciexyz") {
        rgb = clipped(chromaticity({a, b, c}));
    } else if (space == "cieuvy") {
        rgb = clipped({a, b, c});
    } else if (space == "ciexyy") {
        rgb = b != 0 ? clipped(chromaticity({a * c / b, c, (1 - a - b) * c / b})) : Vector{};
    } else if (space == "cielab") {
        rgb = clipped(chromaticity(fromLab(a, b, c)));
    } else if (space == "cieluv") {
        rgb = clipped(fromLuv(a, b, c));
    } else if (space == "tekhvc") {
        rgb = clipped(fromHvc(a * std::numbers::pi / 180, b, c));
    } else {
        return std::nullopt;
    }
    return DeepColor{level(Red, rgb.x), level(Green, rgb.y), level(Blue, rgb.z)};
}

} // namespace vt

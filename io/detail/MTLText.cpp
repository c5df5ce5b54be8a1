#include <io/detail/MTLText.h>

#include <algorithm>
#include <cmath>

#include <io/detail/Materials.h>
#include <io/detail/Tally.h>

namespace rq::io
{
namespace
{
using Colour = std::array<double, 3>;

constexpr Colour kGrey = {0.8, 0.8, 0.8};

// Models of light below this have no highlights.
constexpr double kFirstWithHighlights = 2.0;

bool isPicture(std::string_view word)
{
    constexpr std::string_view kWords[] = {"bump", "disp", "decal", "norm", "refl"};
    return word.starts_with("map_") || std::ranges::find(kWords, word) != std::end(kWords);
}

// What light does behind and around surfaces, and what else materials here do not have.
bool isPassedOver(std::string_view word)
{
    constexpr std::string_view kWords[] = {"Ka", "Ke", "Tf", "Ni",  "d",     "Tr",    "sharpness",
                                           "Km", "Ps", "Pc", "Pcr", "aniso", "anisor"};
    return std::ranges::find(kWords, word) != std::end(kWords);
}

class MTLText
{
public:
    MTLText(const Source &source, BAS_Options &materials) : source_(source), scanner_(source.text), materials_(materials) {}

    void read()
    {
        for (; !scanner_.atEnd(); scanner_.toNextLine())
            if (scanner_.toWord())
                readLine();
        finish();
        warn();
    }

private:
    /// What the lines of one material say.
    struct Said
    {
        std::optional<Colour> diffuse, highlight;
        std::optional<double> exponent, roughness, metalness, model;
    };

    void readLine();
    void readName();
    void readColour(std::optional<Colour> &to);
    void readNumber(std::optional<double> &to);
    bool readReal(double &to);
    void finish();
    void warn() const;
    void passOver(const char *at, const char *expected);

    const Source &source_;
    Scanner scanner_;
    BAS_Options &materials_;
    std::string_view name_;
    Said said_;
    Tally bad_, unknown_, pictures_;
    const char *expected_ = nullptr;  // by the first bad line
};

void MTLText::readLine()
{
    const char *first = scanner_.at();
    const std::string_view word = scanner_.word();
    const std::pair<std::string_view, std::optional<Colour> Said::*> colours[] = {{"Kd", &Said::diffuse},
                                                                                  {"Ks", &Said::highlight}};
    const std::pair<std::string_view, std::optional<double> Said::*> numbers[] = {
        {"Ns", &Said::exponent}, {"Pr", &Said::roughness}, {"Pm", &Said::metalness}, {"illum", &Said::model}};
    const auto colour = std::ranges::find(colours, word, [](const auto &entry) { return entry.first; });
    const auto number = std::ranges::find(numbers, word, [](const auto &entry) { return entry.first; });
    const bool isSaid = colour != std::end(colours) || number != std::end(numbers);
    if (word == "newmtl")
        readName();
    else if (isPicture(word))
        pictures_.add(first);
    else if (!isSaid && !isPassedOver(word))
        unknown_.add(first);
    else if (name_.empty())
        passOver(first, "\"newmtl\"");
    else if (colour != std::end(colours))
        readColour(said_.*colour->second);
    else if (isSaid)
        readNumber(said_.*number->second);
}

void MTLText::readName()
{
    finish();
    name_ = scanner_.toWord() ? scanner_.restOfLine() : std::string_view();
    if (name_.empty())
        passOver(scanner_.at(), "the name of a material");
}

// One number is a grey.
void MTLText::readColour(std::optional<Colour> &to)
{
    Colour colour;
    if (!readReal(colour[0]))
        return;
    colour[1] = colour[2] = colour[0];
    if (scanner_.toWord() && !(readReal(colour[1]) && readReal(colour[2])))
        return;
    to = colour;
}

void MTLText::readNumber(std::optional<double> &to)
{
    if (double number; readReal(number))
        to = number;
}

bool MTLText::readReal(double &to)
{
    scanner_.toWord();
    const char *at = scanner_.at();
    const bool good = scanner_.real(to) && std::isfinite(to);
    if (!good)
        passOver(at, "a number");
    return good;
}

void MTLText::passOver(const char *at, const char *expected)
{
    expected_ = bad_.count == 0 ? expected : expected_;
    bad_.add(at);
}

void MTLText::finish()
{
    if (!name_.empty() && !materials_.has(name_))
    {
        const Colour highlight = said_.highlight.value_or(Colour{});
        const bool shines = said_.model.value_or(kFirstWithHighlights) >= kFirstWithHighlights &&
                            std::ranges::any_of(highlight, [](double part) { return part > 0.0; });
        Material material{.colour = said_.diffuse.value_or(kGrey)};
        // The exponent of Blinn's highlights as the width of a microfacet distribution, the square of the roughness (Walter
        // et al., "Microfacet Models for Refraction through Rough Surfaces", 2007).
        if (shines)
            material.roughness = std::pow(2.0 / (2.0 + std::max(0.0, said_.exponent.value_or(0.0))), 0.25);
        if (said_.roughness)
            material.roughness = std::clamp(*said_.roughness, 0.0, 1.0);
        material.metalness = std::clamp(said_.metalness.value_or(0.0), 0.0, 1.0);
        setMaterial(materials_, name_, material);
    }
    said_ = {};
}

void MTLText::warn() const
{
    if (bad_.count > 0)
        source_.warn(bad_.first,
                     fmt::format("expected {}, found {}; {} passed over", expected_, describe(source_.text, bad_.first),
                                 counted(bad_.count, "line is", "lines are")));
    if (unknown_.count > 0)
        source_.warn(unknown_.first,
                     fmt::format("expected a known word, found {}; {} passed over", describe(source_.text, unknown_.first),
                                 counted(unknown_.count, "line is", "lines are")));
    if (pictures_.count > 0)
        source_.warn(pictures_.first, counted(pictures_.count, "picture is", "pictures are") +
                                          " passed over: materials have one colour each");
}
}  // namespace

void readMTL(const Source &source, BAS_Options &materials) { MTLText(source, materials).read(); }
}  // namespace rq::io

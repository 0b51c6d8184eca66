#include "LattixBasic/Color.h"

#include "QuarnLog/Exception.h"
#include "core/textutil.h"
#include "data/datautil.h"

namespace LattixBasic {

using Velmar::Lattix::Data;
using Velmar::Lattix::JsonValue;
using Velmar::Lattix::ObjectName;

struct colorRecord {
    double red = 0.0;
    double green = 0.0;
    double blue = 0.0;
};

namespace {
double Checked(double value, const char* component) {
    if (!(value >= 0.0 && value <= 1.0))
        QUARN_THROW(std::string("The ") + component +
                    " component of a colour must lie from 0 to 1, not " + std::to_string(value) +
                    ".");
    return value;
}
}  // namespace

Color::Color() : colorData(std::make_shared<colorRecord>()) {}
Color::Color(double red, double green, double blue)
    : colorData(std::make_shared<colorRecord>(
          colorRecord{Checked(red, "red"), Checked(green, "green"), Checked(blue, "blue")})) {}

ObjectName Color::DefaultTypeName() {
    static const ObjectName name(L"TAMARIN", L"Color");
    return name;
}
double Color::GetRed() const {
    return colorData->red;
}
double Color::GetGreen() const {
    return colorData->green;
}
double Color::GetBlue() const {
    return colorData->blue;
}
void Color::SetRed(double value) {
    colorData->red = Checked(value, "red");
}
void Color::SetGreen(double value) {
    colorData->green = Checked(value, "green");
}
void Color::SetBlue(double value) {
    colorData->blue = Checked(value, "blue");
}
ObjectName Color::GetDataTypeName() const {
    return DefaultTypeName();
}

std::wstring Color::ToString() const {
    using Velmar::Lattix::detail::DoubleToText;
    return DoubleToText(colorData->red) + L", " + DoubleToText(colorData->green) + L", " +
           DoubleToText(colorData->blue);
}

void Color::FromString(const std::wstring& text) {
    auto pieces = Velmar::Lattix::detail::SplitTrimmed(text, L',');
    double values[3] = {0, 0, 0};
    bool ok = pieces.size() == 3;
    for (std::size_t i = 0; ok && i < 3; ++i)
        ok = Velmar::Lattix::detail::ReadDouble(pieces[i], values[i]) && values[i] >= 0.0 &&
             values[i] <= 1.0;
    if (!ok)
        Velmar::Lattix::detail::RaiseReadError(__PRETTY_FUNCTION__, DefaultTypeName(), text,
                                               L"three numbers from 0 to 1, such as 1, 0.5, 0");
    *colorData = colorRecord{values[0], values[1], values[2]};
}

JsonValue Color::ToJson() const {
    return JsonValue(nlohmann::json{
        {"red", colorData->red}, {"green", colorData->green}, {"blue", colorData->blue}});
}

void Color::FromJson(const JsonValue& value) {
    const auto& json = value.GetJson();
    double values[3] = {0, 0, 0};
    const char* keys[3] = {"red", "green", "blue"};
    bool ok = json.is_object();
    for (std::size_t i = 0; ok && i < 3; ++i) {
        ok = json.contains(keys[i]) && json[keys[i]].is_number();
        if (ok) values[i] = json[keys[i]].get<double>();
        ok = ok && values[i] >= 0.0 && values[i] <= 1.0;
    }
    if (!ok)
        Velmar::Lattix::detail::RaiseJsonError(__PRETTY_FUNCTION__, DefaultTypeName(), value,
                                               L"{\"red\", \"green\", \"blue\"} each from 0 to 1");
    *colorData = colorRecord{values[0], values[1], values[2]};
}

std::shared_ptr<Data> Color::Clone() const {
    return std::make_shared<Color>(colorData->red, colorData->green, colorData->blue);
}
void Color::Initialize() {
    *colorData = colorRecord{};
}

}  // namespace LattixBasic

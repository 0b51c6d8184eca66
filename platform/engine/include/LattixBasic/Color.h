#pragma once

#include <memory>
#include <string>

#include "Velmar/Lattix/Data.h"

namespace LattixBasic {

struct colorRecord;

// A colour, "TAMARIN.Color": red, green and blue from 0 to 1. Text form "r, g, b" (three numbers
// from 0 to 1); JSON form {"red": r, "green": g, "blue": b}.
class Color : public Velmar::Lattix::Data {
public:
    Color();
    // Components outside 0..1 raise QuarnLog::Exception.
    Color(double red, double green, double blue);

    static Velmar::Lattix::ObjectName DefaultTypeName();

    double GetRed() const;
    double GetGreen() const;
    double GetBlue() const;
    void SetRed(double value);
    void SetGreen(double value);
    void SetBlue(double value);

    Velmar::Lattix::ObjectName GetDataTypeName() const override;
    std::wstring ToString() const override;
    void FromString(const std::wstring& text) override;
    Velmar::Lattix::JsonValue ToJson() const override;
    void FromJson(const Velmar::Lattix::JsonValue& value) override;
    std::shared_ptr<Velmar::Lattix::Data> Clone() const override;
    void Initialize() override;
    using Velmar::Lattix::Data::Initialize;

private:
    std::shared_ptr<colorRecord> colorData;
};

}  // namespace LattixBasic

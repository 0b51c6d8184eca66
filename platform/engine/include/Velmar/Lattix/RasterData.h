#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/Data.h"

namespace Velmar::Lattix {

struct rasterDataRecord;

// A raster dataset named by its file and the bands used (1-based; none means all bands),
// "TAMARIN.Raster". Text form: the path, then ";bands=" and the band numbers separated by commas
// when bands are chosen ("/data/dem.img;bands=1,3"). JSON form: {"path": text, "bands": [..]}.
class RasterData : public Data {
public:
    RasterData();
    explicit RasterData(std::wstring path, std::vector<int> bands = {});

    static ObjectName DefaultTypeName();

    std::wstring GetPath() const;
    void SetPath(const std::wstring& path);
    std::vector<int> GetBands() const;
    // Bands are 1-based; a band below 1 raises QuarnLog::Exception.
    void SetBands(const std::vector<int>& bands);

    ObjectName GetDataTypeName() const override;
    std::wstring ToString() const override;
    void FromString(const std::wstring& text) override;
    JsonValue ToJson() const override;
    void FromJson(const JsonValue& value) override;
    std::shared_ptr<Data> Clone() const override;
    void Initialize() override;
    using Data::Initialize;
    bool IsPlainValue() const override { return false; }

private:
    std::shared_ptr<rasterDataRecord> rasterData;
};

}  // namespace Velmar::Lattix

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ZML/Icon.h"
#include "ZML/Part.h"

namespace ZML {

struct scrollListData;

// One row of a scroll list.
struct ScrollListRow {
    std::wstring text;
    std::shared_ptr<Icon> icon;
};

// A list of rows with optional icons and at most one selected row.
class ScrollList : public Part {
public:
    explicit ScrollList(std::string name = {});
    ~ScrollList() override;

    std::string Kind() const override;

    void AddRow(const std::wstring& text, std::shared_ptr<Icon> icon = nullptr);
    void SetRows(std::vector<ScrollListRow> rows);
    // Removes every row and the selection.
    void ClearRows();
    std::vector<ScrollListRow> Rows() const;
    int RowCount() const;

    // Selects the row at `pos`; -1 clears the selection. Positions outside the rows are refused
    // (false). Fires no event.
    bool SelectByPos(int pos);
    // The selected row's position, or -1.
    int GetSelectedPos() const;

    // A user clicking the row at `pos`: selects it, then fires "mousedown" (and
    // "SelectionChanged" when the selection changed). `pos` -1 is a click below the rows.
    bool UserClick(int pos);
    // A user double-clicking the row at `pos`: selects it and fires "doubleclick".
    bool UserDoubleClick(int pos);

private:
    std::shared_ptr<scrollListData> scrollListRecord;
};

}  // namespace ZML

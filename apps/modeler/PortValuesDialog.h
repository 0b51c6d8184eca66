#pragma once

#include <QDialog>
#include <memory>
#include <string>
#include <vector>

class QLineEdit;

namespace Velmar::Lattix {
class Port;
}

namespace lattix::modeler {

struct PortValuesDialogRecord;

// The generic settings dialog of an operator: one text field per visible input port, showing the
// port's own value as text (empty when the port has none). Accepting writes back the fields that
// changed, each through Port::SetDataFromString (an emptied field clears the value); a value a
// port refuses keeps the dialog open and names the port and the text.
class PortValuesDialog : public QDialog {
public:
    // `ports` are the ports to edit (none null); the dialog keeps them alive while it is open.
    explicit PortValuesDialog(const std::wstring& title,
                              std::vector<std::shared_ptr<Velmar::Lattix::Port>> ports,
                              QWidget* parent = nullptr);
    ~PortValuesDialog() override;

    // The field of `portName`, or null (for tests and scripted use).
    QLineEdit* FieldOf(const std::wstring& portName) const;
    // Writes the changed fields to their ports. Returns the refusals ("port: reason"); the fields
    // before the first refusal are written.
    std::vector<std::wstring> Apply();
    // Whether Apply changed a port value.
    bool Changed() const;

    void accept() override;

private:
    std::shared_ptr<PortValuesDialogRecord> portValuesDialogData;
};

}  // namespace lattix::modeler

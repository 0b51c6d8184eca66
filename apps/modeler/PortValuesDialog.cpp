#include "PortValuesDialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QMessageBox>
#include <QVBoxLayout>
#include <utility>

#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/Data.h"
#include "Velmar/Lattix/Port.h"

namespace lattix::modeler {

struct PortValuesDialogRecord {
    struct Field {
        std::shared_ptr<Velmar::Lattix::Port> port;
        QLineEdit* edit = nullptr;  // owned by the dialog
        QString initial;
    };
    std::vector<Field> fields;
    bool changed = false;
};

namespace {

QString ToQ(const std::wstring& text) {
    return QString::fromStdWString(text);
}

QString ValueText(const Velmar::Lattix::Port& port) {
    const auto data = port.GetExistingData(false);
    return data ? ToQ(data->ToString()) : QString();
}

}  // namespace

PortValuesDialog::PortValuesDialog(const std::wstring& title,
                                   std::vector<std::shared_ptr<Velmar::Lattix::Port>> ports,
                                   QWidget* parent)
    : QDialog(parent), portValuesDialogData(std::make_shared<PortValuesDialogRecord>()) {
    setWindowTitle(ToQ(title));
    auto* layout = new QVBoxLayout(this);
    auto* form = new QFormLayout();
    layout->addLayout(form);
    for (auto& port : ports) {
        auto* edit = new QLineEdit(this);
        const auto initial = ValueText(*port);
        edit->setText(initial);
        edit->setObjectName(ToQ(port->GetName()));
        edit->setToolTip(ToQ(port->GetDescription()));
        const auto caption =
            port->GetDisplayName().empty() ? port->GetName() : port->GetDisplayName();
        form->addRow(ToQ(caption), edit);
        portValuesDialogData->fields.push_back({std::move(port), edit, initial});
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

PortValuesDialog::~PortValuesDialog() = default;

QLineEdit* PortValuesDialog::FieldOf(const std::wstring& portName) const {
    for (const auto& field : portValuesDialogData->fields) {
        if (field.port->GetName() == portName) return field.edit;
    }
    return nullptr;
}

std::vector<std::wstring> PortValuesDialog::Apply() {
    std::vector<std::wstring> refusals;
    for (auto& field : portValuesDialogData->fields) {
        const QString text = field.edit->text();
        if (text == field.initial) continue;
        const auto name = field.port->GetName();
        try {
            if (text.isEmpty()) {
                field.port->ClearData();
            } else if (!field.port->SetDataFromString(text.toStdWString())) {
                refusals.push_back(name + L": \"" + text.toStdWString() +
                                   L"\" is not a value of a type the port accepts");
                break;
            }
        } catch (const QuarnLog::Exception& error) {
            refusals.push_back(name + L": " + error.WideMessage());
            break;
        }
        field.initial = text;
        portValuesDialogData->changed = true;
    }
    return refusals;
}

bool PortValuesDialog::Changed() const {
    return portValuesDialogData->changed;
}

void PortValuesDialog::accept() {
    const auto refusals = Apply();
    if (!refusals.empty()) {
        QString text;
        for (const auto& refusal : refusals) text += ToQ(refusal) + "\n";
        QMessageBox::warning(this, windowTitle(), text.trimmed());
        return;
    }
    QDialog::accept();
}

}  // namespace lattix::modeler

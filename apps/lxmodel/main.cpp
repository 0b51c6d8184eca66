// lxmodel: shows what a model file holds and converts it between the model formats.
//
//   lxmodel info FILE          operators, ports, connections and messages of the model
//   lxmodel convert IN OUT     re-saves IN as OUT, in the format of OUT's extension
//
// Exit codes: 0 done; 1 a file could not be read or written; 2 wrong arguments; 3 (info) the model
// holds error messages.
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "LattixBasic/ConditionalProcess.h"
#include "LattixBasic/IfProcess.h"
#include "Velmar/Lattix/DictionaryData.h"
#include "Velmar/Lattix/Issue.h"
#include "Velmar/Lattix/ListData.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/ModelFormatFactory.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "Velmar/Lattix/PortConnection.h"
#include "qtxt/Text.h"

using namespace Velmar::Lattix;

namespace {

constexpr int ExitOk = 0;
constexpr int ExitFileError = 1;
constexpr int ExitUsage = 2;
constexpr int ExitModelErrors = 3;

std::string U8(const std::wstring& text) {
    return qtxt::DefaultWideToUTF8(text);
}

int Usage() {
    std::cerr
        << "usage: lxmodel info FILE\n"
           "       lxmodel convert IN OUT   (format by extension: .gmdx plain, .gmdc encrypted)\n";
    return ExitUsage;
}

std::string Types(const Port& port) {
    std::string text;
    for (const auto& type : port.GetSupportedDataTypes())
        text += (text.empty() ? "" : ", ") + U8(type.GetFullName());
    return text.empty() ? "any" : text;
}

std::string Label(const std::vector<std::shared_ptr<Operator>>& ops, const Model& model,
                  const std::shared_ptr<Operator>& op) {
    if (op.get() == &model) return "model";
    for (std::size_t i = 0; i < ops.size(); ++i)
        if (ops[i] == op) {
            // Appended, not `"#" + ...`: GCC 12 misreports a memcpy overlap in that form.
            std::string label = "#";
            return label += std::to_string(i + 1);
        }
    return "(outside)";
}

void PrintPorts(const Operator& op, const std::string& indent) {
    for (const auto& port : op.GetPorts()) {
        std::cout << indent << (port->IsInput() ? "in  " : "out ") << U8(port->GetName()) << " ["
                  << Types(*port) << "]";
        if (auto data = port->GetExistingData()) std::cout << " = " << U8(data->ToString());
        std::string flags;
        if (port->IsOptional()) flags += " optional";
        if (port->IsHidden()) flags += " hidden";
        if (port->IsPrivate()) flags += " private";
        if (!flags.empty()) std::cout << " (" << flags.substr(1) << ")";
        std::cout << "\n";
    }
}

// Prints model and the models inside it; answers the number of error messages met.
int PrintModel(const Model& model, const std::string& indent) {
    int errors = 0;
    auto ops = model.GetOperators();
    std::cout << indent << "Model \"" << U8(model.GetDisplayName()) << "\" ("
              << U8(model.GetObjectName().GetFullName()) << ")";
    if (!model.GetProcessName().empty())
        std::cout << ", process \"" << U8(model.GetProcessName()) << "\"";
    std::cout << (model.CanSaveInPlainFormat() ? "" : ", encrypted only") << "\n";
    if (!model.GetPorts().empty()) {
        std::cout << indent << "  Model ports:\n";
        PrintPorts(model, indent + "    ");
    }
    std::cout << indent << "  Operators: " << ops.size() << "\n";
    for (std::size_t i = 0; i < ops.size(); ++i) {
        const auto& op = ops[i];
        if (auto sub = std::dynamic_pointer_cast<Model>(op);
            sub && !std::dynamic_pointer_cast<LattixBasic::ConditionalProcess>(op)) {
            std::cout << indent << "    #" << i + 1 << " sub-model:\n";
            errors += PrintModel(*sub, indent + "      ");
            continue;
        }
        std::cout << indent << "    #" << i + 1 << " " << U8(op->GetObjectName().GetFullName())
                  << " \"" << U8(op->GetDisplayName()) << "\"\n";
        PrintPorts(*op, indent + "        ");
        if (auto conditional = std::dynamic_pointer_cast<LattixBasic::ConditionalProcess>(op)) {
            for (const auto& body : conditional->GetBody())
                std::cout << indent << "        body " << Label(ops, model, body) << "\n";
            if (auto test = conditional->GetTestOperator())
                std::cout << indent << "        test " << Label(ops, model, test) << "\n";
        }
        if (auto branch = std::dynamic_pointer_cast<LattixBasic::IfProcess>(op)) {
            for (bool value : {true, false})
                for (const auto& tail : branch->GetIfTails(value))
                    std::cout << indent << "        " << (value ? "true " : "false ")
                              << Label(ops, model, tail) << "\n";
        }
    }
    std::vector<std::string> links;
    std::vector<std::shared_ptr<const Operator>> children{
        std::static_pointer_cast<const Operator>(model.shared_from_this())};
    children.insert(children.end(), ops.begin(), ops.end());
    for (const auto& child : children) {
        for (const auto& connection : child->GetPortConnections()) {
            if (connection->GetChild() != child) continue;
            auto from = Label(ops, model, connection->GetParent());
            auto to = Label(ops, model, connection->GetChild());
            std::string kind = connection->IsInnerAlias() ? "alias" : "data";
            int status = connection->GetStatus();
            std::string fit = status == PortConnection::StatusMatching      ? "matching"
                              : status == PortConnection::StatusConvertible ? "converted"
                                                                            : "incompatible";
            links.push_back(from + "." + U8(connection->GetParentPort()->GetName()) + " -> " + to +
                            "." + U8(connection->GetChildPort()->GetName()) + " (" + kind +
                            (connection->IsInnerAlias() ? "" : ", " + fit) + ")");
        }
    }
    std::cout << indent << "  Connections: " << links.size() << "\n";
    for (const auto& link : links) std::cout << indent << "    " << link << "\n";
    std::vector<std::string> messages;
    for (const auto& op : ops) {
        for (const auto& message : op->GetMessages()) {
            if (message.severity == Issue::Severity::Error) ++errors;
            messages.push_back(U8(Issue::SeverityName(message.severity)) + " " +
                               Label(ops, model, op) + ": " + U8(message.text));
        }
    }
    if (auto notes = std::dynamic_pointer_cast<ListData>(model.GetAttribute(L"Text")))
        for (const auto& note : notes->GetItems())
            if (auto dictionary = std::dynamic_pointer_cast<DictionaryData>(note))
                if (auto text = dictionary->Get(L"String"))
                    std::cout << indent << "  Note: " << U8(text->ToString()) << "\n";
    std::cout << indent << "  Messages: " << messages.size() << "\n";
    for (const auto& message : messages) std::cout << indent << "    " << message << "\n";
    return errors;
}

int Info(const std::string& file) {
    auto model = ModelFormatFactory::Open(qtxt::UTF8toDefaultWide(file));
    std::cout << file << "\n";
    int errors = PrintModel(*model, "");
    return errors > 0 ? ExitModelErrors : ExitOk;
}

int Convert(const std::string& in, const std::string& out) {
    auto model = ModelFormatFactory::Open(qtxt::UTF8toDefaultWide(in));
    auto target = qtxt::UTF8toDefaultWide(out);
    auto format = ModelFormatFactory::GetFormatForPath(target);
    if (!format) {
        std::cerr << "lxmodel: the extension of \"" << out
                  << "\" names no model format (.gmdx or .gmdc).\n";
        return ExitUsage;
    }
    if (format->GetName() == ModelFormatFactory::PlainFormatName &&
        !model->CanSaveInPlainFormat()) {
        std::cerr << "lxmodel: \"" << in
                  << "\" is an encrypted model and may not be saved in the plain format.\n";
        return ExitFileError;
    }
    ModelFormatFactory::Save(model, target, format->GetName());
    return ExitOk;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<std::string> args(argv + 1, argv + argc);
    try {
        if (args.size() == 2 && args[0] == "info") return Info(args[1]);
        if (args.size() == 3 && args[0] == "convert") return Convert(args[1], args[2]);
        return Usage();
    } catch (const std::exception& error) {
        std::cerr << "lxmodel: " << error.what() << "\n";
        return ExitFileError;
    }
}

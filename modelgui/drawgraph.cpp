#include "modelgui/DrawGraph.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cwctype>
#include <map>
#include <unordered_map>
#include <vector>

#include "LattixBasic/Color.h"
#include "LattixBasic/ConditionalProcess.h"
#include "LattixBasic/IfProcess.h"
#include "QuarnLog/Exception.h"
#include "QuarnLog/Log.h"
#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/DataRef.h"
#include "Velmar/Lattix/DictionaryData.h"
#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/ListData.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/Operator.h"
#include "Velmar/Lattix/Port.h"
#include "Velmar/Lattix/PortConnection.h"
#include "Velmar/Lattix/UnsignedData.h"
#include "ZML/FlowGraphConnectionEx.h"
#include "ZML/FlowGraphPart.h"
#include "flowcontrolpoints.h"
#include "modelgui/FlowControlConnectionPoint.h"
#include "modelgui/OperatorNode.h"
#include "modelgui/PortDescriptionConnectionPoint.h"
#include "modelgui/PortNode.h"
#include "modelgui/TextNode.h"
#include "modelgui/TrueFalseConnectionPoint.h"
#include "modelgui/UpdateOperatorInfo.h"
#include "qpmg/Preference.h"
#include "qtxt/Text.h"
#include "qzml/Help.h"
#include "qzml/Icons.h"

namespace quarn::modelgui {

namespace lx = Velmar::Lattix;

// Connection colours: a link whose types do not fit, and one whose value must be converted.
constexpr std::uint32_t kIncompatibleColor = 6579455;
constexpr std::uint32_t kConvertibleColor = 52685;
// Fill colour of the point of a required input that nothing feeds yet.
constexpr std::uint32_t kOpenInputColor = 6579455;

// The state of one drawing pass. Lookups of the elements drawn in this pass go through the maps
// below: the canvas was emptied at the start of the pass and holds only what the pass drew, so
// they answer what a walk over the canvas would, in constant time.
struct drawPass {
    std::shared_ptr<ZML::FlowGraphPart> canvas;
    std::shared_ptr<lx::Model> model;
    std::shared_ptr<lx::Model> secondModel;
    bool first = false;
    bool showHidden = false;
    bool forceLayout = false;
    int unpositioned = 0;
    qpmg::Preference useBubbleHelp{"zml", "use_bubble_help"};
    qpmg::Preference bubbleHelpDelay{"zml", "bubble_help_delay"};

    bool showPortData = false;
    bool showPortNames = true;
    bool developmentInfo = false;
    // Icons by requested name: many operators share a category icon, and resolving a name scans
    // the icon folder.
    std::map<std::wstring, qzml_Icon> icons;
    std::unordered_map<const lx::Operator*, std::shared_ptr<OperatorNode>> operatorNodes;
    std::unordered_map<const lx::Port*, std::shared_ptr<PortDescriptionConnectionPoint>>
        operatorPortPoints;
    std::unordered_map<const lx::Port*, std::shared_ptr<PortDescriptionConnectionPoint>>
        modelPortPoints;

    drawPass() = default;
    drawPass(const drawPass&) = delete;
    drawPass& operator=(const drawPass&) = delete;
    ~drawPass() {
        for (auto& [name, icon] : icons) {
            qzml_IconFree(icon);
        }
    }
};

namespace {

struct ColorEntry {
    std::uint32_t fill;
    std::uint32_t outline;
    int nodeType;
    bool hasOutline;
    bool hasNodeType;
};

// The three tables share their keys, so they are kept as one; a dash of a table is an entry
// without that column, which falls back to the empty key's value.
const std::map<std::wstring, ColorEntry>& ColorTable() {
    static const std::map<std::wstring, ColorEntry> table{
        {L"port_data_text", {0, 0, 0, false, false}},
        {L"port_default_data_text", {5268580, 0, 0, false, false}},
        {L"port_input_output", {16504529, 15754578, 2, true, true}},
        {L"input_output", {13951992, 3307742, 1, true, true}},
        {L"submodel", {13226709, 7374992, 3, true, true}},
        {L"deprecated", {14737632, 10526880, 0, true, false}},
        {L"default", {15135466, 5810291, 0, true, true}},
        {L"not_found", {8684799, 1316095, 0, true, false}},
        {L"", {15135466, 5810291, 0, true, true}},
    };
    return table;
}

std::wstring Lower(const std::wstring& text) {
    std::wstring lower = text;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](wchar_t c) { return static_cast<wchar_t>(std::towlower(c)); });
    return lower;
}

const ColorEntry* FindColorEntry(const std::wstring& key) {
    const auto& table = ColorTable();
    auto found = table.find(Lower(key));
    return found == table.end() ? nullptr : &found->second;
}

const ColorEntry& FallbackEntry() {
    return ColorTable().at(L"");
}

// A whole number stored as an attribute: integers and doubles (truncated) are taken, and so is
// a text that reads as a whole number. Anything else counts as missing.
bool ReadWholeNumber(const std::shared_ptr<lx::Data>& data, int& value) {
    if (!data) {
        return false;
    }
    long long number = 0;
    if (auto i = std::dynamic_pointer_cast<lx::IntData>(data)) {
        number = i->GetValue();
    } else if (auto u = std::dynamic_pointer_cast<lx::UnsignedData>(data)) {
        number = static_cast<long long>(std::min<std::uint64_t>(u->GetValue(), LLONG_MAX));
    } else if (auto d = std::dynamic_pointer_cast<lx::DoubleData>(data)) {
        if (!std::isfinite(d->GetValue())) {
            return false;
        }
        number = static_cast<long long>(std::trunc(
            std::clamp(d->GetValue(), static_cast<double>(INT_MIN), static_cast<double>(INT_MAX))));
    } else {
        const std::wstring text = data->ToString();
        std::size_t used = 0;
        try {
            number = std::stoll(text, &used);
        } catch (const std::exception&) {
            return false;
        }
        if (used != text.size()) {
            return false;
        }
    }
    value = static_cast<int>(std::clamp<long long>(number, INT_MIN, INT_MAX));
    return true;
}

bool ReadBoolean(const std::shared_ptr<lx::Data>& data) {
    if (!data) {
        return false;
    }
    if (auto b = std::dynamic_pointer_cast<lx::BoolData>(data)) {
        return b->GetValue();
    }
    int number = 0;
    if (ReadWholeNumber(data, number)) {
        return number != 0;
    }
    // Files written by other tools store the flag as text, quoted or not.
    std::wstring text = Lower(data->ToString());
    if (text.size() >= 2 && text.front() == L'"' && text.back() == L'"') {
        text = text.substr(1, text.size() - 2);
    }
    return text == L"true";
}

// Sets a stored orientation on a node. A value the canvas does not know is a damaged file, not a
// reason to stop drawing: it is logged and the node keeps its orientation.
void ApplyOrientation(const std::shared_ptr<ZML::FlowGraphNodeEx>& node,
                      const std::shared_ptr<lx::Data>& data, const std::wstring& owner) {
    int orientation = 0;
    if (!data) {
        return;
    }
    if (!ReadWholeNumber(data, orientation) || orientation < ZML::FlowGraphNodeEx::LeftToRight ||
        orientation > ZML::FlowGraphNodeEx::BottomToTop) {
        QuarnLog::Write(QuarnLog::Level::Warning, "quarn::modelgui::DrawGraph::DrawProcess",
                        __FILE__,
                        "The orientation \"" + qtxt::DefaultWideToUTF8(data->ToString()) +
                            "\" of \"" + qtxt::DefaultWideToUTF8(owner) +
                            "\" is not a node orientation (0 to 3); it is ignored.");
        return;
    }
    node->SetOrientation(orientation);
}

// Location from "PositionX" and "PositionY" when both are present; answers whether they were.
template <class Owner>
bool ApplyPosition(const std::shared_ptr<ZML::FlowGraphNodeEx>& node, const Owner& owner) {
    int x = 0;
    int y = 0;
    if (ReadWholeNumber(owner.GetAttribute(L"PositionX"), x) &&
        ReadWholeNumber(owner.GetAttribute(L"PositionY"), y)) {
        node->SetLocation(x, y);
        return true;
    }
    return false;
}

void ColorConnection(const std::shared_ptr<ZML::FlowGraphConnectionEx>& connection, int status) {
    // A matching link keeps the canvas's own colour, as it does when the user draws it.
    if (status == lx::PortConnection::StatusIncompatible) {
        connection->SetColor(kIncompatibleColor);
    } else if (status == lx::PortConnection::StatusConvertible) {
        connection->SetColor(kConvertibleColor);
    }
}

// Adds a connection from `output` to `input` unless the canvas already joins them.
std::shared_ptr<ZML::FlowGraphConnectionEx> Join(
    const std::shared_ptr<ZML::FlowGraphPart>& canvas,
    const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& input,
    const std::shared_ptr<ZML::FlowGraphConnectionPointEx>& output) {
    if (!input || !output || canvas->FindConnection(input, output)) {
        return nullptr;
    }
    auto connection = std::make_shared<ZML::FlowGraphConnectionEx>();
    connection->SetInputPoint(input);
    connection->SetOutputPoint(output);
    canvas->AddConnection(connection);
    return connection;
}

std::shared_ptr<PortDescriptionConnectionPoint> PointOf(const drawPass& pass,
                                                        const std::shared_ptr<lx::Operator>& op,
                                                        const std::shared_ptr<lx::Port>& port) {
    if (!op || !port) {
        return nullptr;
    }
    const auto& points = op == pass.model ? pass.modelPortPoints : pass.operatorPortPoints;
    auto found = points.find(port.get());
    if (found == points.end()) {
        return nullptr;
    }
    // Only the point drawn for this very operator's port counts.
    if (op != pass.model && port->TryGetOperator() != op) {
        return nullptr;
    }
    return found->second;
}

void DrawDataConnection(drawPass& pass, const std::shared_ptr<lx::PortConnection>& link) {
    auto output = PointOf(pass, link->GetParent(), link->GetParentPort());
    auto input = PointOf(pass, link->GetChild(), link->GetChildPort());
    if (auto connection = Join(pass.canvas, input, output)) {
        ColorConnection(connection, link->GetStatus());
    }
}

std::wstring OperatorTooltip(const lx::Operator& op) {
    std::wstring tooltip = op.GetOperatorNamespace() + L"." + op.GetOperatorName();
    if (const auto description = op.GetDescription(); !description.empty()) {
        tooltip += L"\n" + description;
    }
    return tooltip;
}

void DrawModelPorts(drawPass& pass) {
    const auto portColor = L"Port_Input_Output";
    for (const auto& port : pass.model->GetPorts()) {
        if (port->IsPrivate() || port->IsNative()) {
            continue;
        }
        auto node = std::make_shared<PortNode>();
        node->SetThePort(port);
        pass.canvas->AddNode(node);
        node->SetCaption(port->GetDisplayName());
        node->SetColor(DrawGraph::GetFillColor(portColor));
        node->SetOutlineColor(DrawGraph::GetOutlineColor(portColor));
        node->SetFlowNodeType(2);
        auto point = std::make_shared<PortDescriptionConnectionPoint>();
        point->SetThePort(port);
        if (!port->IsInput()) {
            // A model output takes its value from one operator port.
            point->SetInput();
            point->SetMaxConnections(1);
        } else {
            point->SetOutput();
        }
        node->AddConnectionPoint(point);
        pass.modelPortPoints.emplace(port.get(), point);
        if (!ApplyPosition(node, *port)) {
            ++pass.unpositioned;
        }
        ApplyOrientation(node, port->GetAttribute(L"Orientation"), port->GetDisplayName());
    }
}

void DrawFlowControl(drawPass& pass, const std::shared_ptr<lx::Operator>& op) {
    auto nodeOf = [&pass](const std::shared_ptr<lx::Operator>& which) {
        auto found = pass.operatorNodes.find(which.get());
        return found == pass.operatorNodes.end() ? nullptr : found->second;
    };
    auto node = nodeOf(op);
    if (!node) {
        return;
    }
    // Control that runs through the operator's "Previous" point from its parents' "Next" points:
    // set by the user, and made by the engine along with every data link.
    if (auto previous = detail::FindFlowPointOnNode(node, detail::kPreviousCaption)) {
        for (const auto& parent : op->GetParents()) {
            Join(pass.canvas, previous,
                 detail::FindFlowPointOnNode(nodeOf(parent), detail::kNextCaption));
        }
    }
    auto branch = std::dynamic_pointer_cast<LattixBasic::IfProcess>(op);
    if (!branch) {
        return;
    }
    std::vector<std::shared_ptr<lx::Operator>> trueTails;
    std::vector<std::shared_ptr<lx::Operator>> falseTails;
    branch->GetIfTails(trueTails, falseTails);
    auto branchPoint = [&node](bool isTrue) -> std::shared_ptr<TrueFalseConnectionPoint> {
        for (const auto& point : node->GetFlowConnectionPoints()) {
            auto tf = std::dynamic_pointer_cast<TrueFalseConnectionPoint>(point);
            if (tf && tf->IsTruePoint() == isTrue) {
                return tf;
            }
        }
        return nullptr;
    };
    for (bool isTrue : {true, false}) {
        for (const auto& tail : isTrue ? trueTails : falseTails) {
            auto tailNode = nodeOf(tail);
            if (!tailNode) {
                continue;
            }
            detail::AddFlowControlPoints(tailNode, tail);
            Join(pass.canvas, detail::FindFlowPointOnNode(tailNode, detail::kPreviousCaption),
                 branchPoint(isTrue));
        }
    }
}

void DrawTextAnnotations(drawPass& pass, bool& anyText) {
    auto list = std::dynamic_pointer_cast<lx::ListData>(pass.model->GetAttribute(L"Text"));
    if (!list) {
        return;
    }
    std::size_t index = 0;
    for (const auto& item : list->GetItems()) {
        ++index;
        auto entry = std::dynamic_pointer_cast<lx::DictionaryData>(item);
        if (!entry) {
            QuarnLog::Write(QuarnLog::Level::Warning, "quarn::modelgui::DrawGraph::DrawProcess",
                            __FILE__,
                            "Text annotation " + std::to_string(index) + " of the model is a " +
                                qtxt::DefaultWideToUTF8(item->GetDataTypeName().GetFullName()) +
                                ", not a dictionary; it is not drawn.");
            continue;
        }
        anyText = true;
        const auto text = lx::DataRef(entry, L"String").AsString();
        const auto x = lx::DataRef(entry, L"PositionX").AsInt();
        const auto y = lx::DataRef(entry, L"PositionY").AsInt();
        auto node = std::make_shared<TextNode>();
        node->SetDictionary(entry);
        pass.canvas->AddNode(node);
        node->SetCaption(text);
        node->SetLocation(static_cast<int>(std::clamp<std::int64_t>(x, INT_MIN, INT_MAX)),
                          static_cast<int>(std::clamp<std::int64_t>(y, INT_MIN, INT_MAX)));

        lx::DataRef font(entry, L"Font");
        if (font.IsNull()) {
            continue;
        }
        lx::DataRef size(entry, L"Size");
        int points = 15;
        if (!size.IsNull()) {
            const double scaled = size.AsDouble() * 10.0;
            points = std::isfinite(scaled)
                         ? static_cast<int>(std::clamp<long>(
                               std::lround(std::clamp(scaled, -1e9, 1e9)), INT_MIN, INT_MAX))
                         : 15;
        }
        lx::DataRef colorRef(entry, L"Color");
        if (!colorRef.IsNull()) {
            if (auto color = std::dynamic_pointer_cast<LattixBasic::Color>(colorRef.AsData())) {
                auto component = [](double value) {
                    return static_cast<std::uint32_t>(std::clamp(value, 0.0, 1.0) * 255.0);
                };
                node->SetTextColor(component(color->GetRed()) |
                                   (component(color->GetGreen()) << 8) |
                                   (component(color->GetBlue()) << 16));
            }
        }
        node->SetTextFont(font.AsString(), points, lx::DataRef(entry, L"Bold").AsBool(),
                          lx::DataRef(entry, L"Italics").AsBool(),
                          lx::DataRef(entry, L"Underline").AsBool());
    }
}

}  // namespace

std::uint32_t DrawGraph::GetFillColor(const std::wstring& key) {
    const auto* entry = FindColorEntry(key);
    return entry ? entry->fill : FallbackEntry().fill;
}

std::uint32_t DrawGraph::GetOutlineColor(const std::wstring& key) {
    const auto* entry = FindColorEntry(key);
    return entry && entry->hasOutline ? entry->outline : FallbackEntry().outline;
}

int DrawGraph::GetNodeType(const std::wstring& key) {
    const auto* entry = FindColorEntry(key);
    return entry && entry->hasNodeType ? entry->nodeType : FallbackEntry().nodeType;
}

void DrawGraph::DrawProcess(const std::shared_ptr<ZML::FlowGraphPart>& canvas,
                            const std::shared_ptr<lx::Model>& model,
                            const std::shared_ptr<lx::Model>& secondModel, bool first,
                            bool showHidden, bool forceLayout) {
    if (!model) {
        return;
    }
    if (!canvas) {
        QUARN_THROW("A model cannot be drawn without a canvas.");
    }
    drawPass pass;
    pass.canvas = canvas;
    pass.model = model;
    pass.secondModel = secondModel;
    pass.first = first;
    pass.showHidden = showHidden;
    pass.forceLayout = forceLayout;

    // Nodes placed by the drawing itself are not user moves; position write-back resumes even
    // when drawing fails half way, so that the user's later moves are kept.
    UpdateOperatorInfo::SetIsUpdating(false);
    struct ResumeUpdates {
        bool done = false;
        ~ResumeUpdates() {
            if (!done) {
                UpdateOperatorInfo::SetIsUpdating(true);
            }
        }
    } resume;
    canvas->RemoveAllNodes();

    const double delay = pass.bubbleHelpDelay.GetNumber() * 1000.0;
    canvas->SetTooltipDelay(
        std::isfinite(delay) ? static_cast<int>(std::clamp(delay, 0.0, double{INT_MAX})) : 0);

    bool readonly = model->IsReadonly() || model->IsLocked();
    if (secondModel && secondModel != model) {
        readonly = readonly || secondModel->IsReadonly() || secondModel->IsLocked();
    }
    canvas->SetReadonly(readonly);

    pass.showPortData = canvas->GetShowPortData();
    pass.showPortNames = canvas->GetShowPortNames();
    pass.developmentInfo = qzml_ShowDevelopmentInfo();

    const auto operators = model->GetOperators();
    pass.operatorNodes.reserve(operators.size());
    pass.operatorPortPoints.reserve(operators.size() * 4);
    DrawModelPorts(pass);
    for (const auto& op : operators) {
        AddOperatorToFlowGraph(pass, op);
    }
    for (const auto& link : model->GetPortConnections()) {
        DrawDataConnection(pass, link);
    }
    for (const auto& op : operators) {
        DrawFlowControl(pass, op);
        for (const auto& link : op->GetPortConnections()) {
            DrawDataConnection(pass, link);
        }
    }
    bool anyText = false;
    DrawTextAnnotations(pass, anyText);

    resume.done = true;
    UpdateOperatorInfo::SetIsUpdating(true);

    if (forceLayout || (pass.unpositioned >= 2 && !anyText)) {
        canvas->Layout();
    }
    if (first) {
        canvas->ZoomToFit();
    }
}

void DrawGraph::AddOperatorToFlowGraph(drawPass& pass, const std::shared_ptr<lx::Operator>& op) {
    const auto& canvas = pass.canvas;
    auto node = std::make_shared<OperatorNode>();
    node->SetOperator(op);
    canvas->AddNode(node);
    pass.operatorNodes.emplace(op.get(), node);

    node->SetCaption(op->GetDisplayName());
    std::wstring tooltip = OperatorTooltip(*op);

    std::wstring iconName = op->GetIcon();
    if (iconName.empty()) {
        iconName = L"OpCategory_" + op->GetDisplayCategory() + L".ico";
    }
    auto& icon = pass.icons[iconName];
    if (!icon) {
        icon = qzml_IconCreateFromFile(iconName);
    }
    node->SetIcon(icon->IsPlaceholder() ? iconName : icon->Path());
    if (pass.developmentInfo) {
        tooltip += L"\n\n(ICONNAME=" + iconName;
    }
    node->SetTooltip(tooltip);

    const auto category = op->GetColorCategory();
    node->SetColor(GetFillColor(category));
    node->SetOutlineColor(GetOutlineColor(category));
    node->SetFlowNodeType(GetNodeType(category));

    if (op->HasError()) {
        node->SetState(ZML::FlowGraphNodeEx::Error);
    } else if (op->HasWarning()) {
        node->SetState(ZML::FlowGraphNodeEx::Warning);
    } else if (op->HasInfo()) {
        node->SetState(ZML::FlowGraphNodeEx::Information);
    } else if (op->IsExecuted()) {
        node->SetState(ZML::FlowGraphNodeEx::Executed);
    } else if (op->GetProgress() > 0) {
        node->SetState(ZML::FlowGraphNodeEx::Running);
        node->SetProgress(op->GetProgress());
        const double minimum = op->GetMinimumProgress();
        node->SetProgressBounds(minimum, std::max(minimum, op->GetMaximumProgress()));
    } else {
        node->SetState(ZML::FlowGraphNodeEx::Idle);
    }

    if (!ApplyPosition(node, *op)) {
        ++pass.unpositioned;
    }
    ApplyOrientation(node, op->GetAttribute(L"Orientation"), op->GetDisplayName());

    if (ReadBoolean(op->GetAttribute(L"FlowControl"))) {
        detail::AddFlowControlPoints(node, op);
    }

    for (const auto& port : op->GetPorts()) {
        if (port->IsPrivate() || (port->IsHidden() && !pass.showHidden)) {
            continue;
        }
        auto point = std::make_shared<PortDescriptionConnectionPoint>();
        point->SetThePort(port);
        const auto name = port->GetDisplayName();
        std::wstring caption = name;
        std::wstring valueDescription;
        if (pass.showPortData) {
            bool isDefault = false;
            auto value = port->GetExistingData(false);
            if (!value) {
                value = port->GetExistingData(true);
                isDefault = value != nullptr;
            }
            if (value) {
                std::wstring text = value->ToString();
                if (text.empty()) {
                    text = L"\"\"";
                }
                if (pass.showPortNames) {
                    caption = name + L"=" + text;
                } else {
                    caption = text;
                    point->SetItalics(true);
                    point->SetCaptionColor(
                        GetFillColor(isDefault ? L"port_default_data_text" : L"port_data_text"));
                }
                valueDescription =
                    name + L" = " + text + L" (" + value->GetDataTypeName().GetFullName() + L")";
            }
        }
        point->SetCaption(caption);
        std::wstring pointTooltip = port->GetDescription();
        if (!valueDescription.empty()) {
            pointTooltip += L"\n" + valueDescription;
        }
        point->SetTooltip(pointTooltip);
        if (port->IsInput() && port->AreAllConnectionInnerAliases() &&
            !port->GetExistingData(true) && !port->IsOptional()) {
            point->SetColor(kOpenInputColor);
        }
        if (port->IsInput()) {
            point->SetInput();
            point->SetMaxConnections(1);
        } else {
            point->SetOutput();
        }
        node->AddConnectionPoint(point);
        pass.operatorPortPoints.emplace(port.get(), point);
    }

    if (std::dynamic_pointer_cast<LattixBasic::ConditionalProcess>(op) &&
        std::dynamic_pointer_cast<LattixBasic::IfProcess>(op)) {
        for (bool isTrue : {true, false}) {
            auto branch = std::make_shared<TrueFalseConnectionPoint>();
            branch->SetIsTruePoint(isTrue);
            node->AddConnectionPoint(branch);
        }
    }
}

}  // namespace quarn::modelgui

#pragma once

// The example models of examples/, built through the engine's API, and a model that uses every
// feature the model format keeps.
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "LattixBasic/Color.h"
#include "LattixBasic/ConditionalProcess.h"
#include "LattixBasic/IfProcess.h"
#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/DictionaryData.h"
#include "Velmar/Lattix/DoubleData.h"
#include "Velmar/Lattix/FileData.h"
#include "Velmar/Lattix/IntData.h"
#include "Velmar/Lattix/ListData.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/OperatorFactory.h"
#include "Velmar/Lattix/Port.h"
#include "Velmar/Lattix/StringData.h"
#include "Velmar/Lattix/StringListData.h"

namespace modelformat_test {

using namespace Velmar::Lattix;

inline std::shared_ptr<Operator> Place(const std::shared_ptr<Model>& model,
                                       const std::wstring& name, double x, double y) {
    auto op = OperatorFactory::Create(L"TAMARIN", name);
    op->SetAttribute(L"PositionX", std::make_shared<DoubleData>(x));
    op->SetAttribute(L"PositionY", std::make_shared<DoubleData>(y));
    model->AddOperator(op);
    return op;
}

inline void Link(const std::shared_ptr<Operator>& from, const std::wstring& fromPort,
                 const std::shared_ptr<Operator>& to, const std::wstring& toPort) {
    Operator::ConnectParent(to, from, from->GetPort(fromPort), to->GetPort(toPort));
}

inline std::shared_ptr<DictionaryData> Annotation(const std::wstring& text, double x, double y) {
    auto note = std::make_shared<DictionaryData>();
    note->Set(L"String", std::make_shared<StringData>(text));
    note->Set(L"PositionX", std::make_shared<DoubleData>(x));
    note->Set(L"PositionY", std::make_shared<DoubleData>(y));
    note->Set(L"Font", std::make_shared<StringData>(L"DejaVu Sans"));
    // The drawing scales "Size" by ten for the canvas font; a dark grey.
    note->Set(L"Size", std::make_shared<DoubleData>(1.1));
    note->Set(L"Color", std::make_shared<LattixBasic::Color>(0.125, 0.125, 0.125));
    note->Set(L"Bold", std::make_shared<BoolData>(true));
    note->Set(L"Italics", std::make_shared<BoolData>(false));
    note->Set(L"Underline", std::make_shared<BoolData>(false));
    return note;
}

// Raster in, an expression over it, raster out.
inline std::shared_ptr<Model> RasterExpressionExample() {
    auto model = std::make_shared<Model>();
    model->SetProcessName(L"Scale elevation");
    auto input = Place(model, L"RasterInput", 40, 80);
    input->GetPort(L"Filename")->SetDataFromString(L"$INPUTS/elevation.img");
    auto expression = Place(model, L"Expression", 220, 80);
    expression->GetPort(L"Expression")
        ->SetData(std::make_shared<StringData>(L"$elevation * 0.3048 + 1"));
    auto output = Place(model, L"RasterOutput", 400, 80);
    output->GetPort(L"Filename")->SetDataFromString(L"$OUTPUTS/elevation_feet.img");
    Link(input, L"Raster", expression, L"elevation");
    Link(expression, L"Output", output, L"Raster");
    return model;
}

// If/else: a threshold chooses which of two outputs is written.
inline std::shared_ptr<Model> IfElseExample() {
    auto model = std::make_shared<Model>();
    model->SetProcessName(L"Choose output");
    auto value = Place(model, L"ScalarInput", 40, 60);
    value->GetPort(L"Value")->SetDataFromString(L"12.5");
    auto limit = Place(model, L"ScalarInput", 40, 160);
    limit->GetPort(L"Value")->SetDataFromString(L"10");
    auto test = Place(model, L"GreaterThan", 200, 100);
    Link(value, L"Output", test, L"Input1");
    Link(limit, L"Output", test, L"Input2");
    auto branch = std::static_pointer_cast<LattixBasic::IfProcess>(Place(model, L"If", 360, 100));
    Link(test, L"Output", branch, L"Condition");
    auto high = Place(model, L"ScalarOutput", 520, 40);
    auto low = Place(model, L"ScalarOutput", 520, 160);
    high->SetDisplayName(L"Above the limit");
    low->SetDisplayName(L"Not above the limit");
    Link(value, L"Output", high, L"Value");
    Link(limit, L"Output", low, L"Value");
    high->SetAttribute(L"FlowControl", std::make_shared<StringData>(L"True"));
    low->SetAttribute(L"FlowControl", std::make_shared<StringData>(L"False"));
    branch->AddIfTail(high);
    branch->AddElseTail(low);
    return model;
}

// A loop: a counter in the body, a comparison as the test.
inline std::shared_ptr<Model> LoopExample() {
    auto model = std::make_shared<Model>();
    model->SetProcessName(L"Count to ten");
    auto loop =
        std::static_pointer_cast<LattixBasic::ConditionalProcess>(Place(model, L"Loop", 40, 100));
    loop->GetPort(L"MaxIterations")->SetDataFromString(L"100");
    auto counter = Place(model, L"Counter", 300, 40);
    counter->GetPort(L"Step")->SetDataFromString(L"2");
    auto limit = Place(model, L"ScalarInput", 300, 180);
    limit->GetPort(L"Value")->SetDataFromString(L"10");
    auto test = Place(model, L"LessThan", 520, 100);
    Link(counter, L"Output", test, L"Input1");
    Link(limit, L"Output", test, L"Input2");
    auto show = Place(model, L"ScalarOutput", 740, 40);
    Link(counter, L"Output", show, L"Value");
    loop->AddBodyOperator(counter);
    loop->AddBodyOperator(show);
    loop->SetTest(test, test->GetPort(L"Output"));
    counter->AddParent(loop);
    return model;
}

// Text annotations and model ports that alias inner ports.
inline std::shared_ptr<Model> AnnotatedExample() {
    auto model = std::make_shared<Model>();
    model->SetProcessName(L"Smooth a raster");
    auto input = Place(model, L"RasterInput", 40, 80);
    auto smooth = Place(model, L"FocalMean", 220, 80);
    smooth->GetPort(L"Size")->SetDataFromString(L"5");
    auto output = Place(model, L"RasterOutput", 400, 80);
    Link(input, L"Raster", smooth, L"Raster");
    Link(smooth, L"Output", output, L"Raster");
    auto in = model->AliasPort(input->GetPort(L"Filename"), L"InputRaster");
    in->SetDisplayName(L"Raster to smooth");
    in->SetDescription(L"The raster whose cells are averaged with their neighbours.");
    model->AliasPort(smooth->GetPort(L"Size"), L"KernelSize");
    auto out = model->AliasPort(output->GetPort(L"Filename"), L"OutputRaster");
    out->SetDisplayName(L"Smoothed raster");
    // Model ports keep their places too: a model with text annotations is never laid out
    // automatically when drawn.
    const auto placePort = [](const std::shared_ptr<Port>& port, double x, double y) {
        port->SetAttribute(L"PositionX", std::make_shared<DoubleData>(x));
        port->SetAttribute(L"PositionY", std::make_shared<DoubleData>(y));
    };
    placePort(in, -180, 90);
    placePort(model->GetPort(L"KernelSize"), 40, 220);
    placePort(out, 240, 220);
    auto notes = model->GetTextAnnotations();
    notes->Append(Annotation(L"Smoothing with a square kernel.", 40, 10));
    notes->Append(
        Annotation(L"Set the kernel size on the KernelSize port (odd numbers).", 40, 300));
    return model;
}

inline std::vector<std::pair<std::string, std::shared_ptr<Model>>> ExampleModels() {
    return {{"raster-expression.gmdx", RasterExpressionExample()},
            {"if-else.gmdx", IfElseExample()},
            {"loop.gmdx", LoopExample()},
            {"annotated-ports.gmdx", AnnotatedExample()}};
}

// Every feature the format keeps, in one model.
inline std::shared_ptr<Model> EverythingModel() {
    auto model = RasterExpressionExample();
    model->SetLocked(true);
    model->SetDisplayName(L"Everything");
    model->SetDescription(L"A model with \"quotes\", <angles> & ampersands, and \u00e9\u4e2d.");
    model->SetKeywords({L"all", L"features"});
    auto ops = model->GetOperators();
    auto input = ops[0];
    auto expression = ops[1];
    auto output = ops[2];

    // Port flags, texts, types, values, attributes and data attributes.
    auto pixel = output->GetPort(L"PixelType");
    pixel->SetIsHidden(true);
    pixel->SetDisplayName(L"Cell type");
    pixel->SetKeywords({L"cell", L"depth"});
    pixel->SetData(std::make_shared<StringData>(L"Byte"));
    pixel->SetAttribute(
        L"Choices", std::make_shared<StringListData>(std::vector<std::wstring>{L"Byte", L"Float"}));
    pixel->SetAttribute(L"NoValue", nullptr);
    auto raster = output->GetPort(L"Raster");
    raster->AddExtraSupportedType(ObjectName(L"TAMARIN", L"String"));
    raster->AddExcludedType(ObjectName(L"TAMARIN", L"Int"));
    raster->SetOptional(true);
    raster->SetDataTypeAttribute(ObjectName(L"TAMARIN", L"Raster"), L"Compression",
                                 std::make_shared<StringData>(L"RLE"));
    auto filename = input->GetPort(L"Filename");
    for (const auto& [type, map] : filename->GetDataTypeAttributeMapMap())
        for (const auto& [name, value] : map) {
            filename->RemoveDataTypeAttribute(ObjectName::Parse(type), name);
            break;
        }
    auto extra = output->AddPort(L"Comment", PortDirection::Input);
    extra->SetSupportedTypes({ObjectName(L"TAMARIN", L"String")});
    extra->SetDefaultData(std::make_shared<StringData>(L"none"));
    extra->SetPrivate(true);
    extra->SetNative(false);
    output->RemovePort(L"Output");
    output->RenamePort(L"PixelType", L"CellType");

    // Flow-only parent, and a data link whose flow link was removed.
    auto counter = Place(model, L"Counter", 10, 300);
    auto total = Place(model, L"Add", 100, 300);
    Link(counter, L"Output", total, L"Input1");
    total->RemoveParent(counter);
    output->AddParent(counter);

    // Conditionals.
    auto test = Place(model, L"GreaterThan", 200, 300);
    Link(total, L"Output", test, L"Input1");
    auto branch = std::static_pointer_cast<LattixBasic::IfProcess>(Place(model, L"If", 300, 300));
    branch->AddIfTail(output);
    branch->AddElseTail(total);
    auto guard = std::static_pointer_cast<LattixBasic::ConditionalProcess>(
        Place(model, L"Conditional", 400, 300));
    guard->AddBodyOperator(counter);
    guard->SetTest(test, nullptr);
    auto loop =
        std::static_pointer_cast<LattixBasic::ConditionalProcess>(Place(model, L"Loop", 500, 300));
    loop->AddBodyOperator(total);
    loop->AddBodyOperator(counter);
    loop->SetTest(test, test->GetPort(L"Output"));

    // Model ports: aliases in and out, a free port with a value, annotations.
    model->AliasPort(input->GetPort(L"Filename"), L"Source");
    model->AliasPort(counter->GetPort(L"Start"), L"Start");
    model->AliasPort(total->GetPort(L"Input2"), L"Start");
    model->AliasPort(expression->GetPort(L"Output"), L"Result");
    auto free = model->AddNewPort(L"Threshold", PortDirection::Input);
    free->SetData(std::make_shared<DoubleData>(0.25));
    model->GetTextAnnotations()->Append(Annotation(L"Everything at once.", 0, 0));

    // A sub-model with its own operators, alias and link, fed from outside.
    auto sub = std::make_shared<Model>(L"User", L"Offset");
    sub->SetDisplayName(L"Offset");
    auto plus = OperatorFactory::Create(L"TAMARIN", L"Add");
    sub->AddOperator(plus);
    auto shown = OperatorFactory::Create(L"TAMARIN", L"ScalarOutput");
    sub->AddOperator(shown);
    Link(plus, L"Output", shown, L"Value");
    sub->AliasPort(plus->GetPort(L"Input1"), L"Value");
    plus->GetPort(L"Input2")->SetDataFromString(L"7");
    auto nested = std::make_shared<Model>(L"User", L"Nested");
    nested->AddOperator(OperatorFactory::Create(L"TAMARIN", L"Sqrt"));
    sub->AddSubModel(nested);
    model->AddSubModel(sub);
    Link(counter, L"Output", sub, L"Value");
    return model;
}

}  // namespace modelformat_test

// The built-in operators. Each category's icon is "<category>.svg" in lower case; the canvas
// colours input and output operators by "Input_Output" and the rest by "Default".
#include "operators/catalogue.h"

#include "LattixBasic/ConditionalProcess.h"
#include "LattixBasic/IfProcess.h"
#include "LattixBasic/LoopProcess.h"
#include "Velmar/Lattix/BoolData.h"
#include "Velmar/Lattix/ExpressionOperator.h"
#include "Velmar/Lattix/StringData.h"
#include "core/textutil.h"

namespace Velmar::Lattix::detail {

namespace {

// Functions rather than constants: the catalogue may be built while the library is still being
// loaded (a loader installed from a static initializer reaches the factory), before constants of
// this file would exist.
ObjectName Raster() {
    static const ObjectName name(L"TAMARIN", L"Raster");
    return name;
}
ObjectName Double() {
    static const ObjectName name(L"TAMARIN", L"Double");
    return name;
}
ObjectName Int() {
    static const ObjectName name(L"TAMARIN", L"Int");
    return name;
}
ObjectName Unsigned() {
    static const ObjectName name(L"TAMARIN", L"Unsigned");
    return name;
}
ObjectName Bool() {
    static const ObjectName name(L"TAMARIN", L"Bool");
    return name;
}
ObjectName String() {
    static const ObjectName name(L"TAMARIN", L"String");
    return name;
}
ObjectName StringList() {
    static const ObjectName name(L"TAMARIN", L"StringList");
    return name;
}
ObjectName File() {
    static const ObjectName name(L"TAMARIN", L"File");
    return name;
}
ObjectName List() {
    static const ObjectName name(L"TAMARIN", L"List");
    return name;
}
ObjectName Generic() {
    static const ObjectName name(L"TAMARIN", L"Data");
    return name;
}
ObjectName FocalStatistic() {
    static const ObjectName name(L"TAMARIN", L"FocalStatistic");
    return name;
}
ObjectName ZonalStatistic() {
    static const ObjectName name(L"TAMARIN", L"ZonalStatistic");
    return name;
}
ObjectName KernelShape() {
    static const ObjectName name(L"TAMARIN", L"KernelShape");
    return name;
}
std::vector<ObjectName> Numeric() {
    return {Raster(), Double(), Int()};
}

PortDefinition In(std::wstring name, std::vector<ObjectName> types, std::wstring description,
                  std::wstring defaultValue = {}, bool optional = false) {
    PortDefinition port;
    port.name = std::move(name);
    port.direction = PortDirection::Input;
    port.types = std::move(types);
    port.description = std::move(description);
    port.defaultValue = std::move(defaultValue);
    port.optional = optional || !port.defaultValue.empty();
    return port;
}

PortDefinition Out(std::wstring name, std::vector<ObjectName> types, std::wstring description) {
    PortDefinition port;
    port.name = std::move(name);
    port.direction = PortDirection::Output;
    port.types = std::move(types);
    port.description = std::move(description);
    return port;
}

// A file port that reads (input) or writes (output) a file of the given filter and extension.
PortDefinition FilePort(std::wstring name, bool input, std::wstring filter, std::wstring extension,
                        std::wstring kind, std::wstring description,
                        std::vector<ObjectName> types = {File()}) {
    auto port = In(std::move(name), std::move(types), std::move(description));
    auto& attributes = port.dataAttributes[File().GetFullName()];
    attributes[L"Input"] = std::make_shared<BoolData>(input);
    attributes[L"FileFilter"] = std::make_shared<StringData>(filter);
    attributes[L"Extension"] = std::make_shared<StringData>(extension);
    attributes[L"Kind"] = std::make_shared<StringData>(kind);
    return port;
}

std::wstring IconOf(const std::wstring& category) {
    return Lower(category) + L".svg";
}

struct Catalogue {
    std::vector<OperatorDefinition> operators;

    OperatorDefinition& Add(std::wstring category, std::wstring name, std::wstring displayName,
                            std::wstring description, std::vector<std::wstring> keywords,
                            std::vector<PortDefinition> ports, bool expression = false,
                            std::vector<std::wstring> syntax = {}) {
        OperatorDefinition definition;
        definition.name = ObjectName(L"TAMARIN", std::move(name));
        definition.displayName = std::move(displayName);
        definition.description = std::move(description);
        definition.displayCategory = category;
        definition.colorCategory =
            (category == L"Input" || category == L"Output") ? L"Input_Output" : L"Default";
        definition.icon = IconOf(category);
        definition.keywords = std::move(keywords);
        definition.ports = std::move(ports);
        definition.usableInExpression = expression;
        definition.syntaxForms = std::move(syntax);
        operators.push_back(std::move(definition));
        return operators.back();
    }

    // A two-operand operator written as a function and, when `symbol` is given, as an infix.
    void Binary(const std::wstring& category, const std::wstring& name,
                const std::wstring& displayName, const std::wstring& description,
                std::vector<std::wstring> keywords, const std::wstring& symbol,
                std::vector<ObjectName> outputTypes = Numeric()) {
        std::vector<std::wstring> syntax;
        if (!symbol.empty()) syntax.push_back(L"<value1> " + symbol + L" <value2>");
        syntax.push_back(name + L"(<value1>, <value2>)");
        Add(category, name, displayName, description, std::move(keywords),
            {In(L"Input1", Numeric(), L"The first operand."),
             In(L"Input2", Numeric(), L"The second operand."),
             Out(L"Output", std::move(outputTypes), L"The result, cell by cell for rasters.")},
            true, syntax);
    }

    void Unary(const std::wstring& category, const std::wstring& name,
               const std::wstring& displayName, const std::wstring& description,
               std::vector<std::wstring> keywords, std::vector<std::wstring> extraSyntax = {}) {
        std::vector<std::wstring> syntax = {name + L"(<value>)"};
        syntax.insert(syntax.end(), extraSyntax.begin(), extraSyntax.end());
        Add(category, name, displayName, description, std::move(keywords),
            {In(L"Input", Numeric(), L"The value."),
             Out(L"Output", Numeric(), L"The result, cell by cell for rasters.")},
            true, syntax);
    }

    void Focal(const std::wstring& name, const std::wstring& displayName,
               const std::wstring& statistic, const std::wstring& description) {
        Add(L"Focal", name, displayName, description,
            {L"focal", L"neighbourhood", L"kernel", L"moving window", Lower(statistic)},
            {In(L"Raster", {Raster()}, L"The raster to filter."),
             In(L"Size", {Unsigned()}, L"The kernel width and height in cells (odd).", L"3"),
             In(L"Shape", {KernelShape()}, L"The shape of the kernel.", L"Square"),
             In(L"IgnoreValue", {Double()}, L"Cells of this value are left out of the statistic.",
                {}, true),
             Out(L"Output", {Raster()},
                 L"The " + Lower(statistic) + L" of each cell's neighbourhood.")},
            true,
            {name + L"(<raster>, <size>)", name + L"(<raster>, <size>, IGNORE_VALUE <value>)",
             name + L"(<raster>, <size>, USE_VALUE { <value1> , <value2> , <value3> , ... })"});
    }

    void Zonal(const std::wstring& name, const std::wstring& displayName,
               const std::wstring& statistic, const std::wstring& description) {
        Add(L"Zonal", name, displayName, description,
            {L"zonal", L"zones", L"statistics", Lower(statistic)},
            {In(L"Zones", {Raster()}, L"The raster of zone numbers."),
             In(L"Values", {Raster()}, L"The raster whose values are summarised per zone."),
             In(L"IgnoreZero", {Bool()}, L"Leave zone 0 out.", L"true"),
             Out(L"Output", {Raster(), List()}, L"The " + Lower(statistic) + L" of each zone.")},
            true,
            {name + L"(<zones>, <values>)", name + L"(<zones>, <values>, IGNORE)",
             name + L"(<zones>, <values>, USEALL)"});
    }
};

}  // namespace

const std::vector<std::wstring>& BuiltInCategoryOrder() {
    static const std::vector<std::wstring> order = {
        L"Input",       L"Output", L"Arithmetic", L"Math",        L"Relational", L"Logical",
        L"Conditional", L"Focal",  L"Zonal",      L"FlowControl", L"List",       L"Expression"};
    return order;
}

std::vector<OperatorDefinition> BuiltInOperators() {
    Catalogue c;

    // Input
    c.Add(L"Input", L"RasterInput", L"Raster Input",
          L"Reads a raster dataset, all bands or the chosen ones.",
          {L"read", L"open", L"image", L"grid", L"raster"},
          {FilePort(L"Filename", true, L"Raster files|*.img;*.tif;*.tiff", L".img", L"Raster",
                    L"The raster file to read.", {File(), Raster()}),
           Out(L"Raster", {Raster()}, L"The raster read.")});
    c.Add(L"Input", L"VectorInput", L"Vector Input",
          L"Reads a vector layer (points, lines or polygons).",
          {L"read", L"open", L"shapefile", L"features", L"vector"},
          {FilePort(L"Filename", true, L"Vector files|*.shp;*.gpkg;*.geojson", L".shp", L"Vector",
                    L"The vector file to read."),
           In(L"Layer", {String()}, L"The layer of a multi-layer source; empty for the first.", {},
              true),
           Out(L"Vector", {File()}, L"The vector layer read.")});
    c.Add(L"Input", L"ScalarInput", L"Scalar Input", L"Gives a single number to the model.",
          {L"number", L"constant", L"value", L"scalar"},
          {In(L"Value", {Double(), Int()}, L"The number."),
           Out(L"Output", {Double(), Int()}, L"The number.")});
    c.Add(L"Input", L"FileInput", L"File Input",
          L"Gives the name of an existing file to the model.", {L"file", L"name", L"path", L"read"},
          {FilePort(L"Filename", true, L"All files|*", L"", L"File", L"The file."),
           Out(L"File", {File()}, L"The file name.")});

    // Output
    c.Add(L"Output", L"RasterOutput", L"Raster Output", L"Writes a raster dataset.",
          {L"write", L"save", L"image", L"grid", L"raster"},
          {In(L"Raster", {Raster(), Double(), Int()}, L"The raster to write."),
           FilePort(L"Filename", false, L"Raster files|*.img;*.tif;*.tiff", L".img", L"Raster",
                    L"The raster file to write."),
           In(L"PixelType", {String()}, L"The cell type written (Float, Integer, Byte).", L"Float"),
           Out(L"Output", {Raster()}, L"The raster written.")});
    c.Add(L"Output", L"VectorOutput", L"Vector Output", L"Writes a vector layer.",
          {L"write", L"save", L"shapefile", L"features", L"vector"},
          {In(L"Vector", {File()}, L"The vector layer to write."),
           FilePort(L"Filename", false, L"Vector files|*.shp;*.gpkg;*.geojson", L".shp", L"Vector",
                    L"The vector file to write.")});
    c.Add(L"Output", L"ScalarOutput", L"Scalar Output",
          L"Shows a single value computed by the model.",
          {L"number", L"result", L"value", L"scalar"},
          {In(L"Value", {Double(), Int(), Bool(), String()}, L"The value to show.")});
    c.Add(L"Output", L"FileOutput", L"File Output",
          L"Copies a file made by the model to a chosen name.",
          {L"file", L"write", L"copy", L"save"},
          {In(L"File", {File()}, L"The file to copy."),
           FilePort(L"Filename", false, L"All files|*", L"", L"File", L"Where to write it.")});

    // Arithmetic
    c.Binary(L"Arithmetic", L"Add", L"Add", L"Adds two values.", {L"plus", L"sum", L"+"}, L"+");
    c.Binary(L"Arithmetic", L"Subtract", L"Subtract", L"Subtracts the second value from the first.",
             {L"minus", L"difference", L"-"}, L"-");
    c.Binary(L"Arithmetic", L"Multiply", L"Multiply", L"Multiplies two values.",
             {L"times", L"product", L"*"}, L"*");
    c.Binary(L"Arithmetic", L"Divide", L"Divide", L"Divides the first value by the second.",
             {L"quotient", L"ratio", L"/"}, L"/");
    c.Binary(L"Arithmetic", L"Modulus", L"Modulus",
             L"The remainder of dividing the first value by the second.",
             {L"remainder", L"mod", L"%"}, L"%");
    c.Binary(L"Arithmetic", L"Power", L"Power",
             L"Raises the first value to the power of the second.", {L"exponent", L"^"}, L"^");
    c.Unary(L"Arithmetic", L"Negate", L"Negate", L"Changes the sign of a value.",
            {L"minus", L"sign"}, {L"-<value>"});

    // Math
    c.Unary(L"Math", L"Abs", L"Absolute Value", L"The value without its sign.",
            {L"absolute", L"magnitude"});
    c.Unary(L"Math", L"Sqrt", L"Square Root", L"The square root of a value.", {L"root"});
    c.Unary(L"Math", L"Exp", L"Exponential", L"e raised to the value.", {L"exponential", L"e"});
    c.Unary(L"Math", L"Log", L"Natural Logarithm", L"The natural logarithm of a value.",
            {L"ln", L"logarithm"});
    c.Unary(L"Math", L"Log10", L"Common Logarithm", L"The base-10 logarithm of a value.",
            {L"logarithm", L"decibel"});
    c.Unary(L"Math", L"Sin", L"Sine", L"The sine of an angle in radians.",
            {L"trigonometry", L"angle"});
    c.Unary(L"Math", L"Cos", L"Cosine", L"The cosine of an angle in radians.",
            {L"trigonometry", L"angle"});
    c.Unary(L"Math", L"Tan", L"Tangent", L"The tangent of an angle in radians.",
            {L"trigonometry", L"angle"});
    c.Unary(L"Math", L"Round", L"Round",
            L"Rounds to the nearest whole number, halves away from zero.",
            {L"integer", L"nearest"});
    c.Unary(L"Math", L"Floor", L"Floor", L"The largest whole number not above the value.",
            {L"integer", L"down"});
    c.Unary(L"Math", L"Ceil", L"Ceiling", L"The smallest whole number not below the value.",
            {L"integer", L"up"});
    c.Binary(L"Math", L"Min", L"Minimum", L"The smaller of two values.", {L"smallest", L"lower"},
             L"");
    c.Binary(L"Math", L"Max", L"Maximum", L"The larger of two values.", {L"largest", L"upper"},
             L"");

    // Relational
    const std::vector<ObjectName> truth = {Raster(), Bool()};
    c.Binary(L"Relational", L"EqualTo", L"Equal To", L"True where the two values are equal.",
             {L"equal", L"=="}, L"==", truth);
    c.Binary(L"Relational", L"NotEqual", L"Not Equal", L"True where the two values differ.",
             {L"different", L"!="}, L"!=", truth);
    c.Binary(L"Relational", L"LessThan", L"Less Than",
             L"True where the first value is below the second.", {L"smaller", L"<"}, L"<", truth);
    c.Binary(L"Relational", L"LessOrEqual", L"Less Or Equal",
             L"True where the first value is not above the second.", {L"<="}, L"<=", truth);
    c.Binary(L"Relational", L"GreaterThan", L"Greater Than",
             L"True where the first value is above the second.", {L"larger", L">"}, L">", truth);
    c.Binary(L"Relational", L"GreaterOrEqual", L"Greater Or Equal",
             L"True where the first value is not below the second.", {L">="}, L">=", truth);

    // Logical
    c.Binary(L"Logical", L"And", L"And", L"True where both values are true.",
             {L"both", L"&&", L"conjunction"}, L"and", truth);
    c.Binary(L"Logical", L"Or", L"Or", L"True where either value is true.",
             {L"either", L"||", L"disjunction"}, L"or", truth);
    c.Binary(L"Logical", L"Xor", L"Exclusive Or", L"True where exactly one value is true.",
             {L"exclusive", L"different"}, L"", truth);
    c.Add(L"Logical", L"Not", L"Not", L"True where the value is false.",
          {L"negation", L"!", L"invert"},
          {In(L"Input", truth, L"The value."), Out(L"Output", truth, L"The negated value.")}, true,
          {L"not <value>", L"Not(<value>)"});

    // Conditional
    c.Add(L"Conditional", L"If", L"If / Else",
          L"Runs the operators on its True branch when the condition holds, those on its False "
          L"branch otherwise.",
          {L"if", L"else", L"branch", L"condition", L"decision"},
          {In(L"Condition", {Bool()}, L"The condition tested.")})
        .make = [] { return std::make_shared<LattixBasic::IfProcess>(); };
    c.Add(L"Conditional", L"Conditional", L"Conditional",
          L"Runs its body only when its test holds.", {L"when", L"guard", L"condition", L"test"},
          {})
        .make = [] { return std::make_shared<LattixBasic::ConditionalProcess>(); };
    c.Add(L"Conditional", L"Either", L"Either",
          L"Chooses the first or the second value by a condition, cell by cell.",
          {L"choose", L"select", L"conditional", L"ternary"},
          {In(L"Condition", {Raster(), Bool()}, L"Where true the first value is taken."),
           In(L"WhenTrue", Numeric(), L"The value where the condition holds."),
           In(L"WhenFalse", Numeric(), L"The value elsewhere."),
           Out(L"Output", Numeric(), L"The chosen values.")},
          true,
          {L"if(<condition>, <value1>, <value2>)", L"<condition> ? <value1> : <value2>",
           L"Either(<condition>, <value1>, <value2>)"});

    // Focal
    c.Focal(L"FocalMean", L"Focal Mean", L"Mean",
            L"The mean of each cell's neighbourhood (smoothing).");
    c.Focal(L"FocalMax", L"Focal Maximum", L"Maximum",
            L"The largest value in each cell's neighbourhood.");
    c.Focal(L"FocalMin", L"Focal Minimum", L"Minimum",
            L"The smallest value in each cell's neighbourhood.");
    c.Focal(L"FocalSum", L"Focal Sum", L"Sum", L"The sum of each cell's neighbourhood.");
    c.Focal(L"FocalStandardDeviation", L"Focal Standard Deviation", L"Standard deviation",
            L"The standard deviation of each cell's neighbourhood (texture).");
    c.Focal(L"FocalMedian", L"Focal Median", L"Median",
            L"The median of each cell's neighbourhood (noise removal).");
    c.Focal(L"FocalMajority", L"Focal Majority", L"Majority",
            L"The most frequent value of each cell's neighbourhood.");
    c.Add(L"Focal", L"Focal", L"Focal Statistics",
          L"Any neighbourhood statistic over a kernel of chosen size and shape.",
          {L"focal", L"neighbourhood", L"kernel", L"filter", L"convolution"},
          {In(L"Raster", {Raster()}, L"The raster to filter."),
           In(L"Statistic", {FocalStatistic()}, L"The statistic computed.", L"Mean"),
           In(L"Size", {Unsigned()}, L"The kernel width and height in cells (odd).", L"3"),
           In(L"Shape", {KernelShape()}, L"The shape of the kernel.", L"Square"),
           Out(L"Output", {Raster()}, L"The statistic of each cell's neighbourhood.")});

    // Zonal
    c.Zonal(L"ZonalMean", L"Zonal Mean", L"Mean", L"The mean of the values in each zone.");
    c.Zonal(L"ZonalMax", L"Zonal Maximum", L"Maximum", L"The largest value in each zone.");
    c.Zonal(L"ZonalMin", L"Zonal Minimum", L"Minimum", L"The smallest value in each zone.");
    c.Zonal(L"ZonalSum", L"Zonal Sum", L"Sum", L"The sum of the values in each zone.");
    c.Zonal(L"ZonalCount", L"Zonal Count", L"Count", L"The number of cells in each zone.");
    c.Add(L"Zonal", L"Zonal", L"Zonal Statistics", L"Any statistic of the values in each zone.",
          {L"zonal", L"zones", L"statistics", L"summary"},
          {In(L"Zones", {Raster()}, L"The raster of zone numbers."),
           In(L"Values", {Raster()}, L"The raster whose values are summarised per zone."),
           In(L"Statistic", {ZonalStatistic()}, L"The statistic computed.", L"Mean"),
           Out(L"Output", {Raster(), List()}, L"The statistic of each zone.")});

    // Flow control
    c.Add(L"FlowControl", L"Loop", L"Loop", L"Runs its body again while its test holds.",
          {L"loop", L"repeat", L"while", L"iterate"},
          {In(L"MaxIterations", {Unsigned()}, L"The most times the body runs (0: no limit).", L"0"),
           Out(L"Iteration", {Unsigned()}, L"The number of the running pass, from 1.")})
        .make = [] { return std::make_shared<LattixBasic::LoopProcess>(); };
    c.Add(L"FlowControl", L"Counter", L"Counter",
          L"Counts from a start value by a step, one value per pass of a loop.",
          {L"count", L"sequence", L"index"},
          {In(L"Start", {Int()}, L"The first value.", L"1"),
           In(L"Step", {Int()}, L"The change per pass.", L"1"),
           Out(L"Output", {Int()}, L"The present value.")});

    // Lists
    c.Add(L"List", L"CreateList", L"Create List", L"Makes a list of the values given.",
          {L"list", L"array", L"collect"},
          {In(L"Item1", {Generic()}, L"The first item."),
           In(L"Item2", {Generic()}, L"The second item.", {}, true),
           Out(L"List", {List()}, L"The list.")});
    c.Add(L"List", L"GetListItem", L"Get List Item",
          L"Takes one item of a list by its index (from 0).",
          {L"list", L"index", L"element", L"item"},
          {In(L"List", {List(), StringList()}, L"The list."),
           In(L"Index", {Unsigned()}, L"The index, from 0.", L"0"),
           Out(L"Item", {Generic()}, L"The item.")});
    c.Add(L"List", L"ListCount", L"List Count", L"The number of items of a list.",
          {L"list", L"length", L"size", L"count"},
          {In(L"List", {List(), StringList()}, L"The list."),
           Out(L"Count", {Unsigned()}, L"The number of items.")});
    c.Add(L"List", L"AppendToList", L"Append To List", L"Adds an item at the end of a list.",
          {L"list", L"append", L"add"},
          {In(L"List", {List()}, L"The list."), In(L"Item", {Generic()}, L"The item added."),
           Out(L"Output", {List()}, L"The longer list.")});

    // Expression
    c.Add(L"Expression", L"Expression", L"Expression",
          L"Computes a value from an expression over its input ports; it gets one input port per $ "
          L"name.",
          {L"formula", L"calculator", L"lxl", L"math", L"model maker"},
          {In(L"Expression", {String()}, L"The expression text."),
           Out(L"Output", Numeric(), L"The value computed.")})
        .make = [] { return std::make_shared<ExpressionOperator>(); };

    return std::move(c.operators);
}

}  // namespace Velmar::Lattix::detail

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/Model.h"
#include "Velmar/Lattix/OperatorFactory.h"
#include "Velmar/Lattix/UIProviderFactory.h"
#include "qtxt/Text.h"

using namespace Velmar::Lattix;
namespace fs = std::filesystem;

namespace {

std::size_t CountOperators(const std::vector<OperatorCategory>& level) {
    std::size_t count = 0;
    for (const auto& category : level)
        count += category.operators.size() + CountOperators(category.subCategories);
    return count;
}

TEST(OperatorFactoryTest, CatalogueHasTypedDescribedOperatorsInOrderedCategories) {
    auto categories = OperatorFactory::GetCategories();
    ASSERT_GE(categories.size(), 8u);
    EXPECT_EQ(categories[0].name, L"Input");
    EXPECT_EQ(categories[1].name, L"Output");
    EXPECT_GE(CountOperators(categories), 40u);
    std::set<std::wstring> names;
    for (const auto& category : categories) names.insert(category.name);
    for (const wchar_t* wanted : {L"Arithmetic", L"Math", L"Relational", L"Logical", L"Conditional",
                                  L"Focal", L"Zonal", L"FlowControl", L"List", L"Expression"})
        EXPECT_TRUE(names.count(wanted)) << wanted;

    std::size_t usable = 0;
    for (const auto& category : categories) {
        for (const auto& info : category.operators) {
            if (info->GetProperty(L"Namespace") != L"TAMARIN") continue;
            auto name = info->GetFullName();
            EXPECT_EQ(info->GetType(), L"Operator");
            EXPECT_FALSE(info->GetProperty(L"DisplayName").empty()) << name;
            EXPECT_FALSE(info->GetProperty(L"Description").empty()) << name;
            EXPECT_FALSE(info->GetProperty(L"Keywords").empty()) << name;
            EXPECT_EQ(info->GetProperty(L"Icon"), qtxt::widen([&] {
                          std::string lower = qtxt::narrow(category.name);
                          for (auto& ch : lower) ch = static_cast<char>(std::tolower(ch));
                          return lower + ".svg";
                      }()))
                << name;
            auto flag = info->GetProperty(L"IsUsableInExpression");
            EXPECT_TRUE(flag == L"true" || flag == L"false") << name;
            if (flag == L"true") {
                ++usable;
                EXPECT_FALSE(info->GetSyntaxForms().empty()) << name;
                EXPECT_TRUE(
                    OperatorFactory::IsExpressionFunction(info->GetProperty(L"ObjectName")));
                EXPECT_TRUE(OperatorFactory::IsExpressionFunction(name));
            }
            auto op = OperatorFactory::Create(info->GetProperty(L"Namespace"),
                                              info->GetProperty(L"ObjectName"));
            EXPECT_EQ(op->GetDisplayCategory(), category.name) << name;
            EXPECT_FALSE(op->GetColorCategory().empty()) << name;
            for (const auto& port : op->GetPorts()) {
                if (port->IsInput()) {
                    EXPECT_FALSE(port->GetSupportedDataTypes().empty())
                        << name << " " << port->GetName();
                }
            }
        }
    }
    EXPECT_GE(usable, 20u);
    EXPECT_FALSE(OperatorFactory::IsExpressionFunction(L"RasterInput"));
    EXPECT_FALSE(OperatorFactory::IsExpressionFunction(L"sin")) << "names compare as written";
}

TEST(OperatorFactoryTest, PluginTypeInfoLookupAndClone) {
    auto info = OperatorFactory::GetPluginTypeInfo(L"TAMARIN.FocalMean");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->GetProperty(L"DisplayName"), L"Focal Mean");
    EXPECT_EQ(info->GetProperty(L"DisplayCategory"), L"Focal");
    EXPECT_EQ(info->GetProperty(L"uri"), L"");
    EXPECT_EQ(info->GetProperty(L"NoSuchKey"), L"");
    auto clone = info->Clone();
    clone->SetProperty(L"DisplayName", L"Changed");
    EXPECT_EQ(info->GetProperty(L"DisplayName"), L"Focal Mean");
    EXPECT_EQ(OperatorFactory::GetPluginTypeInfo(L"TAMARIN.Nothing"), nullptr);
    EXPECT_EQ(OperatorFactory::GetPluginTypeInfo(L"garbage"), nullptr);
    EXPECT_THROW(OperatorFactory::Create(L"TAMARIN", L"Nothing"), QuarnLog::Exception);

    auto focal = OperatorFactory::Create(L"TAMARIN", L"FocalMean");
    EXPECT_EQ(focal->GetPort(L"Size")->GetExistingData()->ToString(), L"3");
    EXPECT_EQ(focal->GetPort(L"Shape")->GetExistingData()->GetDataTypeName().GetFullName(),
              L"TAMARIN.KernelShape");
    auto file = OperatorFactory::Create(L"TAMARIN", L"RasterOutput")->GetPort(L"Filename");
    auto attributes = file->GetDataTypeAttributeMap(ObjectName(L"TAMARIN", L"File"));
    EXPECT_EQ(attributes[L"Input"]->ToString(), L"false");
    EXPECT_EQ(attributes[L"Extension"]->ToString(), L".img");
}

TEST(OperatorFactoryTest, RegisterAndUnregisterRunTheChangedCallbacks) {
    int calls = 0;
    auto token = OperatorFactory::RegisterFactoryChangedCallback(L"test", [&calls] { ++calls; });
    OperatorDefinition definition;
    definition.name = ObjectName(L"TESTNS", L"Extra");
    definition.displayCategory = L"Testing/Deeper";
    OperatorFactory::Register(definition);
    EXPECT_EQ(calls, 1);
    bool found = false;
    for (const auto& category : OperatorFactory::GetCategories())
        if (category.name == L"Testing")
            for (const auto& sub : category.subCategories)
                found = found || (sub.name == L"Deeper" && sub.operators.size() == 1);
    EXPECT_TRUE(found) << "a category path makes sub-categories";
    EXPECT_TRUE(OperatorFactory::Unregister(definition.name));
    EXPECT_FALSE(OperatorFactory::Unregister(definition.name));
    EXPECT_EQ(calls, 2);
    token.reset();
    OperatorFactory::Register(definition);
    OperatorFactory::Unregister(definition.name);
    EXPECT_EQ(calls, 2) << "a released token stops the callback";

    auto named = OperatorFactory::RegisterFactoryChangedCallback(L"byname", [&calls] { ++calls; });
    OperatorFactory::UnregisterFactoryChangedCallback(L"byname");
    OperatorFactory::Register(definition);
    OperatorFactory::Unregister(definition.name);
    EXPECT_EQ(calls, 2);
}

// User operators: model files in the user operator folder, read by the installed loader.
class UserOperatorTest : public ::testing::Test {
protected:
    void SetUp() override {
        folder = fs::path(LATTIX_BINARY_DIR) / "test-home" / "user-operators-test";
        fs::remove_all(folder);
        fs::create_directories(folder);
        previousLoader = OperatorFactory::GetUserOperatorLoader();
        OperatorFactory::SetUserOperatorLoader([](const std::wstring& path) {
            std::ifstream in(qtxt::narrow(path));
            std::string display;
            std::getline(in, display);
            if (display == "broken") throw std::runtime_error("damaged model file");
            auto model = std::make_shared<Model>();
            model->SetDisplayName(qtxt::widen(display));
            model->SetDescription(L"From a file");
            return model;
        });
        OperatorFactory::SetUserOperatorFolder(qtxt::widen(folder.string()));
    }
    void TearDown() override {
        OperatorFactory::SetUserOperatorLoader(previousLoader);
        OperatorFactory::SetUserOperatorFolder(L"");
        fs::remove_all(folder);
    }
    void Write(const std::string& name, const std::string& content) {
        std::ofstream(folder / name) << content << "\n";
    }
    fs::path folder;
    OperatorFactory::UserOperatorLoader previousLoader;
};

TEST_F(UserOperatorTest, FolderChangesFireCallbacksAndListOperatorsWithUri) {
    int calls = 0;
    auto token = OperatorFactory::RegisterFactoryChangedCallback(L"OperatorsTreeView",
                                                                 [&calls] { ++calls; });
    EXPECT_FALSE(OperatorFactory::Rescan());
    Write("Slope.gmdx", "Slope Tool");
    Write("notes.txt", "ignored");
    EXPECT_TRUE(OperatorFactory::Rescan());
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(OperatorFactory::Rescan()) << "nothing changed";
    EXPECT_EQ(calls, 1);

    auto info = OperatorFactory::GetPluginTypeInfo(L"User.Slope");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->GetProperty(L"DisplayName"), L"Slope Tool");
    EXPECT_EQ(info->GetProperty(L"DisplayCategory"), L"User Operators");
    EXPECT_EQ(info->GetProperty(L"uri"), qtxt::widen("file://" + (folder / "Slope.gmdx").string()));
    EXPECT_EQ(info->GetProperty(L"OriginalName"), L"Model");
    auto op = OperatorFactory::Create(L"User", L"Slope");
    EXPECT_TRUE(std::dynamic_pointer_cast<Model>(op));
    EXPECT_EQ(op->GetUri(), info->GetProperty(L"uri"));
    EXPECT_EQ(op->GetObjectName().GetFullName(), L"User.Slope");

    Write("Broken.gmdx", "broken");  // unreadable files are logged and skipped
    OperatorFactory::Rescan();
    EXPECT_EQ(OperatorFactory::GetPluginTypeInfo(L"User.Broken"), nullptr);

    fs::remove(folder / "Slope.gmdx");
    EXPECT_TRUE(OperatorFactory::Rescan());
    EXPECT_EQ(OperatorFactory::GetPluginTypeInfo(L"User.Slope"), nullptr);
    EXPECT_GE(calls, 2);
}

struct FakeProvider : OperatorUIProvider {
    bool HandlesOperator(const Operator& op) const override {
        return op.GetOperatorName() == L"FocalMean";
    }
    bool ShowDialog(const std::shared_ptr<Operator>&) override {
        ++shown;
        return true;
    }
    int shown = 0;
};

struct FakePortProvider : PortUIProvider {
    bool HandlesPort(const Port& port) const override { return port.GetName() == L"Filename"; }
    bool ShowDialog(const std::shared_ptr<Port>&) override { return false; }
};

TEST(UIProviderFactoryTest, DialogsOnlyThroughRegisteredProviders) {
    auto focal = OperatorFactory::Create(L"TAMARIN", L"FocalMean");
    auto input = OperatorFactory::Create(L"TAMARIN", L"RasterInput");
    EXPECT_FALSE(UIProviderFactory::HasDialog(focal));
    EXPECT_FALSE(UIProviderFactory::ShowDialog(focal));
    auto provider = std::make_shared<FakeProvider>();
    auto token = UIProviderFactory::RegisterOperatorProvider(provider);
    auto portToken = UIProviderFactory::RegisterPortProvider(std::make_shared<FakePortProvider>());
    EXPECT_TRUE(UIProviderFactory::HasDialog(focal));
    EXPECT_FALSE(UIProviderFactory::HasDialog(input));
    EXPECT_TRUE(UIProviderFactory::ShowDialog(focal));
    EXPECT_EQ(provider->shown, 1);
    EXPECT_TRUE(UIProviderFactory::HasDialog(input->GetPort(L"Filename")));
    EXPECT_FALSE(UIProviderFactory::ShowDialog(input->GetPort(L"Filename")));
    token.reset();
    portToken.reset();
    EXPECT_FALSE(UIProviderFactory::HasDialog(focal));
    EXPECT_FALSE(UIProviderFactory::HasDialog(input->GetPort(L"Filename")));
}

}  // namespace

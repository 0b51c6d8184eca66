#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/ModelFormatFactory.h"
#include "Velmar/Lattix/OperatorFactory.h"
#include "examplemodels.h"
#include "modelcompare.h"
#include "qtxt/Text.h"

namespace fs = std::filesystem;
using namespace Velmar::Lattix;
using modelformat_test::ExpectSameOperator;

namespace {

const wchar_t* Plain = ModelFormatFactory::PlainFormatName;
const wchar_t* Encrypted = ModelFormatFactory::EncryptedFormatName;

fs::path Folder(const std::string& name) {
    auto folder = fs::path(LATTIX_BINARY_DIR) / "test-home" / "modelformat" / name;
    fs::remove_all(folder);
    fs::create_directories(folder);
    return folder;
}

std::wstring Wide(const fs::path& path) {
    return qtxt::widen(path.string());
}

std::string ReadBytes(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void WriteBytes(const fs::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string ErrorOf(const std::function<void()>& fn) {
    try {
        fn();
    } catch (const QuarnLog::Exception& error) {
        return error.what();
    }
    return "<no error>";
}

class KeyScope {
public:
    explicit KeyScope(const char* hex) { ::setenv("LATTIX_MODEL_KEY", hex, 1); }
    ~KeyScope() { ::unsetenv("LATTIX_MODEL_KEY"); }
};

const char* KeyA = "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f";
const char* KeyB = "ff0102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f";

}  // namespace

TEST(ModelFormat, EveryFeatureSurvivesFileRoundTripAndSavesIdentically) {
    auto folder = Folder("roundtrip");
    auto model = modelformat_test::EverythingModel();
    auto first = folder / "everything.gmdx";
    ModelFormatFactory::Save(model, Wide(first), Plain);
    auto reopened = ModelFormatFactory::Open(L"file://" + Wide(first));
    ExpectSameOperator(*model, *reopened);
    auto second = folder / "again.gmdx";
    ModelFormatFactory::Save(reopened, Wide(second));
    EXPECT_EQ(ReadBytes(first), ReadBytes(second));
    EXPECT_FALSE(fs::exists(folder / "everything.gmdx.tmp"));
}

TEST(ModelFormat, BufferRoundTripKeepsEverything) {
    auto model = modelformat_test::EverythingModel();
    auto text = ModelFormatFactory::SaveToBuffer(model, Plain);
    EXPECT_EQ(text.rfind(L"<?xml", 0), 0u);
    auto reopened = ModelFormatFactory::OpenFromBuffer(text, Plain);
    ExpectSameOperator(*model, *reopened);
    EXPECT_EQ(ModelFormatFactory::SaveToBuffer(reopened, Plain), text);
}

TEST(ModelFormat, UnchangedOperatorsWriteOnlyTheirIdentity) {
    auto model = std::make_shared<Model>();
    model->AddOperator(OperatorFactory::Create(L"TAMARIN", L"Add"));
    auto text = qtxt::DefaultWideToUTF8(ModelFormatFactory::SaveToBuffer(model, Plain));
    EXPECT_NE(text.find("<Operator id=\"1\" namespace=\"TAMARIN\" name=\"Add\" />"),
              std::string::npos)
        << text;
}

TEST(ModelFormat, ExamplesOpenWithoutErrors) {
    auto folder = fs::path(LATTIX_SOURCE_DIR) / "examples";
    bool regenerate = std::getenv("LATTIX_WRITE_EXAMPLES") != nullptr;
    for (const auto& [name, built] : modelformat_test::ExampleModels()) {
        SCOPED_TRACE(name);
        auto path = folder / name;
        if (regenerate) ModelFormatFactory::Save(built, Wide(path));
        auto opened = ModelFormatFactory::Open(Wide(path));
        ExpectSameOperator(*built, *opened);
        for (const auto& op : opened->GetOperators()) EXPECT_FALSE(op->HasError());
        EXPECT_EQ(qtxt::DefaultWideToUTF8(ModelFormatFactory::SaveToBuffer(opened, Plain)),
                  ReadBytes(path));
    }
}

TEST(ModelFormat, EncryptedRoundTripForbidsThePlainFormat) {
    KeyScope key(KeyA);
    auto folder = Folder("encrypted");
    auto model = modelformat_test::EverythingModel();
    auto path = folder / "secret.gmdc";
    ModelFormatFactory::Save(model, Wide(path));  // format chosen by extension
    auto bytes = ReadBytes(path);
    EXPECT_EQ(bytes.substr(0, 4), "LXMC");
    EXPECT_EQ(bytes.find("RasterInput"), std::string::npos);
    auto reopened = ModelFormatFactory::Open(Wide(path));
    EXPECT_FALSE(reopened->CanSaveInPlainFormat());
    EXPECT_TRUE(model->CanSaveInPlainFormat());
    std::function<void(Model&)> allow = [&](Model& m) {
        m.SetPlainFormatForbidden(false);
        for (const auto& sub : m.GetSubModels()) allow(*sub);
    };
    allow(*reopened);
    ExpectSameOperator(*model, *reopened);

    auto armoured = ModelFormatFactory::SaveToBuffer(model, Encrypted);
    EXPECT_FALSE(ModelFormatFactory::OpenFromBuffer(armoured)->CanSaveInPlainFormat());
    // A plain copy of a forbidden model (an undo snapshot) stays forbidden.
    auto forbidden = ModelFormatFactory::Open(Wide(path));
    EXPECT_FALSE(
        ModelFormatFactory::OpenFromBuffer(ModelFormatFactory::SaveToBuffer(forbidden, Plain))
            ->CanSaveInPlainFormat());
}

TEST(ModelFormat, EncryptedFilesRefuseWrongKeysAndTampering) {
    auto folder = Folder("tamper");
    auto path = folder / "secret.gmdc";
    {
        KeyScope key(KeyA);
        ModelFormatFactory::Save(modelformat_test::LoopExample(), Wide(path), Encrypted);
    }
    auto original = ReadBytes(path);
    {
        KeyScope key(KeyB);
        EXPECT_NE(
            ErrorOf([&] { ModelFormatFactory::Open(Wide(path)); }).find("cannot be decrypted"),
            std::string::npos);
    }
    KeyScope key(KeyA);
    struct Case {
        const char* what;
        std::string bytes;
        const char* expected;
    };
    auto flipped = original;
    flipped[flipped.size() / 2] ^= 0x01;
    auto header = original;
    header[4] = 2;
    std::vector<Case> cases = {
        {"a flipped content byte", flipped, "cannot be decrypted"},
        {"a newer version", header, "encrypted format version 2"},
        {"cut short", original.substr(0, 20), "cut short"},
        {"only the magic", "LXMC", "cut short"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        WriteBytes(path, c.bytes);
        auto message = ErrorOf([&] { ModelFormatFactory::Open(Wide(path)); });
        EXPECT_NE(message.find(c.expected), std::string::npos) << message;
        EXPECT_NE(message.find(path.string()), std::string::npos) << message;
    }
    KeyScope bad("12zz");
    WriteBytes(path, original);
    EXPECT_NE(ErrorOf([&] { ModelFormatFactory::Open(Wide(path)); }).find("LATTIX_MODEL_KEY"),
              std::string::npos);
}

TEST(ModelFormat, DamagedFilesGiveClearErrorsNamingFileAndPlace) {
    auto folder = Folder("damaged");
    auto good = qtxt::DefaultWideToUTF8(
        ModelFormatFactory::SaveToBuffer(modelformat_test::IfElseExample(), Plain));
    auto replace = [&](const std::string& from, const std::string& to) {
        auto text = good;
        auto at = text.find(from);
        EXPECT_NE(at, std::string::npos) << from;
        return at == std::string::npos ? text : text.replace(at, from.size(), to);
    };
    std::string deep = "<?xml version=\"1.0\"?>\n<LattixModel formatVersion=\"1\">\n";
    for (int i = 0; i < 200; ++i) deep += "<Model namespace=\"TAMARIN\" name=\"Model\" id=\"1\">\n";
    for (int i = 0; i < 200; ++i) deep += "</Model>\n";
    deep += "</LattixModel>\n";
    std::string deepValue = "[";
    for (int i = 0; i < 100000; ++i) deepValue += "[";
    struct Case {
        const char* what;
        std::string bytes;
        std::vector<std::string> expected;
    };
    std::vector<Case> cases = {
        {"empty", "", {"is empty"}},
        {"truncated", good.substr(0, good.size() / 2), {"malformed or cut short", "line "}},
        {"not xml", "GIF89a....", {"not a model"}},
        {"wrong root",
         "<?xml version=\"1.0\"?>\n<Settings formatVersion=\"1\"/>",
         {"root element is <Settings>", "line 2"}},
        {"unknown operator",
         replace("name=\"GreaterThan\"", "name=\"Frobnicate\""),
         {"unknown operator \"TAMARIN.Frobnicate\"", "Operator[id=3]", "line "}},
        {"bad value text",
         replace(">12.5<", ">twelve<"),
         {"bad value text \"twelve\"", "Value", "Port[name=Value]"}},
        {"value of the wrong shape",
         replace(">12.5<", ">\"12.5\"<"),
         {"bad value text", "TAMARIN.Double"}},
        {"unknown data type",
         replace("type=\"TAMARIN.Double\"", "type=\"TAMARIN.Quaternion\""),
         {"unknown data type \"TAMARIN.Quaternion\""}},
        {"newer version",
         replace("formatVersion=\"1\"", "formatVersion=\"7\""),
         {"format version 7, newer"}},
        {"version not a number",
         replace("formatVersion=\"1\"", "formatVersion=\"one\""),
         {"is not a whole number"}},
        {"missing operator of a link",
         replace("<Connection from=\"1\"", "<Connection from=\"42\""),
         {"no operator with id 42", "Links/Connection"}},
        {"missing port of a link",
         replace("fromPort=\"Output\"", "fromPort=\"Nowhere\""),
         {"has no port \"Nowhere\""}},
        {"duplicate ids", replace("id=\"2\"", "id=\"1\""), {"duplicate operator id 1"}},
        {"bad flag", replace("branch=\"true\"", "branch=\"maybe\""), {"true or false expected"}},
        {"unexpected element",
         replace("<Links>", "<Links><Wormhole/>"),
         {"unexpected element <Wormhole>"}},
        {"huge nesting", deep, {"nest deeper than 64"}},
        {"deep value", replace(">12.5<", ">" + deepValue + "<"), {"deeper than 64"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        auto path = folder / "damaged.gmdx";
        WriteBytes(path, c.bytes);
        auto message = ErrorOf([&] { ModelFormatFactory::Open(Wide(path)); });
        EXPECT_NE(message.find(path.string()), std::string::npos) << message;
        for (const auto& part : c.expected)
            EXPECT_NE(message.find(part), std::string::npos) << message;
    }
}

// Damage of every kind, at random places of a file that holds every feature: each damaged file
// opens or is refused with the reader's error, never with anything worse (the sanitizer build
// checks the memory side). Seeded, so that a failure repeats.
TEST(ModelFormat, RandomlyDamagedFilesOpenOrFailCleanly) {
    auto good = qtxt::DefaultWideToUTF8(
        ModelFormatFactory::SaveToBuffer(modelformat_test::EverythingModel(), Plain));
    std::mt19937 random(20261121);
    auto pick = [&random](std::size_t size) {
        return std::uniform_int_distribution<std::size_t>(0, size - 1)(random);
    };
    const std::string pieces[] = {"<",        ">",          "\"",   "=",    "/>",
                                  "</Port>",  "&amp;",      "&#0;", "-1",   "99999999999",
                                  "id=\"1\"", "<Operator>", "\xC3", "\xFF", " "};
    int opened = 0;
    int refused = 0;
    for (int round = 0; round < 1500; ++round) {
        auto bytes = good;
        for (int edit = 0, edits = 1 + round % 4; edit < edits; ++edit) {
            auto at = pick(bytes.size());
            switch (random() % 4) {
                case 0:
                    bytes.erase(at, 1 + pick(16));
                    break;
                case 1:
                    bytes.insert(at, pieces[pick(std::size(pieces))]);
                    break;
                case 2:
                    bytes[at] = static_cast<char>(random());
                    break;
                default:
                    bytes.resize(at);
                    break;
            }
            if (bytes.empty()) bytes = "<";
        }
        try {
            ModelFormatFactory::OpenFromBuffer(qtxt::widen(bytes), Plain);
            ++opened;
        } catch (const QuarnLog::Exception& error) {
            ++refused;
            EXPECT_NE(std::string(error.what()).find("Cannot read"), std::string::npos)
                << error.what();
        } catch (const std::exception& error) {
            ADD_FAILURE() << "round " << round << ": not the reader's error: " << error.what();
        }
    }
    // Both outcomes occur: the damage is neither all harmless nor all fatal.
    EXPECT_GT(opened, 0);
    EXPECT_GT(refused, 0);
}

// Hand-edited files may number operators as they like: ids far apart, out of order, or huge.
TEST(ModelFormat, OperatorIdsNeedNotBeDense) {
    auto text = qtxt::DefaultWideToUTF8(
        ModelFormatFactory::SaveToBuffer(modelformat_test::IfElseExample(), Plain));
    auto original = ModelFormatFactory::OpenFromBuffer(qtxt::widen(text), Plain);
    for (const char* suffix : {"000000", "7", "999999"}) {
        SCOPED_TRACE(suffix);
        auto renumbered = text;
        // Every id and reference to one gets the suffix: 1 -> 1000000 and so on.
        for (const char* attribute :
             {"id=\"", "from=\"", "to=\"", "child=\"", "parent=\"", "owner=\"", "operator=\""}) {
            std::string key = std::string(" ") + attribute;
            for (auto at = renumbered.find(key); at != std::string::npos;
                 at = renumbered.find(key, at + 1)) {
                auto end = renumbered.find('"', at + key.size());
                if (renumbered.compare(at + key.size(), end - at - key.size(), "0") != 0)
                    renumbered.insert(end, suffix);
            }
        }
        ASSERT_NE(renumbered, text);
        auto model = ModelFormatFactory::OpenFromBuffer(qtxt::widen(renumbered), Plain);
        EXPECT_EQ(ModelFormatFactory::SaveToBuffer(model, Plain),
                  ModelFormatFactory::SaveToBuffer(original, Plain));
    }
}

TEST(ModelFormat, FailedSaveLeavesTheOldFile) {
    auto folder = Folder("atomic");
    auto path = folder / "model.gmdx";
    ModelFormatFactory::Save(modelformat_test::LoopExample(), Wide(path));
    auto before = ReadBytes(path);
    EXPECT_NE(ErrorOf([&] {
                  ModelFormatFactory::Save(modelformat_test::IfElseExample(), Wide(path),
                                           L"NoSuchFormat");
              }).find("Unknown model format"),
              std::string::npos);
    EXPECT_NE(ErrorOf([&] {
                  ModelFormatFactory::Save(modelformat_test::IfElseExample(),
                                           Wide(folder / "missing" / "m.gmdx"));
              }).find("open"),
              std::string::npos);
    EXPECT_EQ(ReadBytes(path), before);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1);
}

TEST(ModelFormat, UrisAndPaths) {
    struct Case {
        std::wstring uri;
        std::wstring path;
    };
    for (const auto& c : std::vector<Case>{{L"/a/b.gmdx", L"/a/b.gmdx"},
                                           {L"file:///a/b%20c.gmdx", L"/a/b c.gmdx"},
                                           {L"FILE://localhost/x/%C3%A9.gmdx", L"/x/\u00e9.gmdx"},
                                           {L"relative/m.gmdx", L"relative/m.gmdx"}})
        EXPECT_EQ(ModelFormatFactory::PathFromUri(c.uri), c.path);
    EXPECT_NE(ErrorOf([] {
                  ModelFormatFactory::PathFromUri(L"http://example.org/m.gmdx");
              }).find("not a file path"),
              std::string::npos);
    EXPECT_NE(ErrorOf([] { ModelFormatFactory::PathFromUri(L"file:///a%2"); }).find("bad % escape"),
              std::string::npos);
}

TEST(ModelFormat, UserOperatorFolderListsSavedModels) {
    auto folder = Folder("user-operators");
    OperatorFactory::SetUserOperatorFolder(Wide(folder));
    auto model = modelformat_test::AnnotatedExample();
    model->SetDisplayName(L"Smoother");
    ModelFormatFactory::Save(model, Wide(folder / "Smoother.gmdx"));
    OperatorFactory::Rescan();
    auto info = OperatorFactory::GetPluginTypeInfo(L"User.Smoother");
    ASSERT_NE(info, nullptr);
    EXPECT_NE(info->GetProperty(L"uri").find(L"Smoother.gmdx"), std::wstring::npos);
    auto op = OperatorFactory::Create(L"User", L"Smoother");
    ASSERT_NE(std::dynamic_pointer_cast<Model>(op), nullptr);
    EXPECT_EQ(std::dynamic_pointer_cast<Model>(op)->GetOperators().size(), 3u);
    // A model using the user operator saves it whole and reads back without the folder.
    auto outer = std::make_shared<Model>();
    outer->AddOperator(op);
    auto text = ModelFormatFactory::SaveToBuffer(outer, Plain);
    OperatorFactory::SetUserOperatorFolder({});
    ExpectSameOperator(*outer, *ModelFormatFactory::OpenFromBuffer(text));
}

TEST(ModelFormat, AConditionalOperatorSavedOnItsOwnReadsBackAsItsType) {
    auto loop = std::dynamic_pointer_cast<Model>(OperatorFactory::Create(L"TAMARIN", L"Loop"));
    ASSERT_NE(loop, nullptr);
    loop->AddOperator(OperatorFactory::Create(L"TAMARIN", L"Counter"));
    loop->GetPort(L"MaxIterations")->SetDataFromString(L"3");
    auto reopened =
        ModelFormatFactory::OpenFromBuffer(ModelFormatFactory::SaveToBuffer(loop, Plain));
    ExpectSameOperator(*loop, *reopened);
    auto notModel =
        "<?xml version=\"1.0\"?>\n<LattixModel formatVersion=\"1\">\n"
        "  <Operator namespace=\"TAMARIN\" name=\"Add\" />\n</LattixModel>\n";
    EXPECT_NE(ErrorOf([&] {
                  ModelFormatFactory::OpenFromBuffer(qtxt::widen(notModel));
              }).find("the operator at the root is not a model"),
              std::string::npos);
}

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <sodium.h>

#include "QuarnLog/Exception.h"
#include "Velmar/Lattix/Model.h"
#include "format/formats.h"
#include "format/modelxml.h"
#include "qtxt/Text.h"

namespace Velmar::Lattix::format {

namespace {

namespace fs = std::filesystem;

// File layout: magic, version byte, nonce, then the sealed XML. The magic and the version are
// authenticated with the content, so that no byte of the file can change unnoticed.
constexpr std::string_view Magic = "LXMC";
constexpr unsigned char Version = 1;
constexpr std::size_t HeaderSize = 5;
constexpr std::size_t NonceSize = crypto_aead_xchacha20poly1305_ietf_NPUBBYTES;
constexpr std::size_t KeySize = crypto_aead_xchacha20poly1305_ietf_KEYBYTES;
constexpr std::size_t TagSize = crypto_aead_xchacha20poly1305_ietf_ABYTES;
// The first line of the text form (SaveToBuffer); base64 of the file bytes follows.
constexpr std::string_view Armour = "LATTIX-ENCRYPTED-MODEL\n";

void StartSodium() {
    if (sodium_init() < 0) QUARN_THROW("The encryption library could not be started.");
}

std::wstring KeyFilePath() {
    std::string base;
    if (const char* config = std::getenv("XDG_CONFIG_HOME"); config && *config)
        base = config;
    else if (const char* home = std::getenv("HOME"); home && *home)
        base = std::string(home) + "/.config";
    else
        base.push_back('.');  // (not `base = "."`: GCC 12 misreports a memcpy overlap there)
    return qtxt::UTF8toDefaultWide(base + "/lattix/model.key");
}

std::vector<unsigned char> KeyFromHex(const std::string& text, const std::wstring& origin) {
    std::string hex;
    for (char c : text)
        if (!std::isspace(static_cast<unsigned char>(c))) hex += c;
    std::vector<unsigned char> key(KeySize);
    std::size_t length = 0;
    const char* end = nullptr;
    if (hex.size() != KeySize * 2 ||
        sodium_hex2bin(key.data(), key.size(), hex.c_str(), hex.size(), nullptr, &length, &end) !=
            0 ||
        length != KeySize)
        QUARN_THROW(L"The model key in " + origin + L" is not " + std::to_wstring(KeySize * 2) +
                    L" hexadecimal digits.");
    return key;
}

// The key: LATTIX_MODEL_KEY when set, else the installation's key file. create makes the file
// (with a fresh random key, readable by its owner only) when neither exists.
std::vector<unsigned char> ModelKey(bool create) {
    StartSodium();
    if (const char* variable = std::getenv("LATTIX_MODEL_KEY"); variable && *variable)
        return KeyFromHex(variable, L"LATTIX_MODEL_KEY");
    auto path = KeyFilePath();
    std::error_code error;
    if (fs::exists(fs::path(qtxt::DefaultWideToUTF8(path)), error))
        return KeyFromHex(ReadWholeFile(path), L"\"" + path + L"\"");
    if (!create)
        QUARN_THROW(
            L"No key for encrypted models: set LATTIX_MODEL_KEY or provide the key file \"" + path +
            L"\".");
    std::vector<unsigned char> key(KeySize);
    crypto_aead_xchacha20poly1305_ietf_keygen(key.data());
    std::string hex(KeySize * 2 + 1, '\0');
    sodium_bin2hex(hex.data(), hex.size(), key.data(), key.size());
    hex.back() = '\n';
    auto folder = fs::path(qtxt::DefaultWideToUTF8(path)).parent_path();
    fs::create_directories(folder, error);
    if (error)
        QUARN_THROW(L"Cannot make the folder of the model key file \"" + path + L"\" (" +
                    qtxt::widen(error.message()) + L").");
    WriteFileAtomically(path, hex);
    fs::permissions(fs::path(qtxt::DefaultWideToUTF8(path)),
                    fs::perms::owner_read | fs::perms::owner_write, error);
    return key;
}

void ForbidPlain(Model& model) {
    model.SetPlainFormatForbidden(true);
    for (const auto& sub : model.GetSubModels()) ForbidPlain(*sub);
}

}  // namespace

std::wstring EncryptedSpatialModelFormat::GetName() const {
    return L"EncryptedSpatialModelFormat";
}

std::wstring EncryptedSpatialModelFormat::GetExtension() const {
    return L".gmdc";
}

bool EncryptedSpatialModelFormat::Recognizes(std::string_view bytes) const {
    return bytes.substr(0, Magic.size()) == Magic || bytes.substr(0, Armour.size()) == Armour;
}

std::string EncryptedSpatialModelFormat::Write(const Model& model) const {
    auto key = ModelKey(true);
    auto plain = WriteModelXml(model);
    std::string out(HeaderSize + NonceSize + plain.size() + TagSize, '\0');
    auto* bytes = reinterpret_cast<unsigned char*>(out.data());
    std::copy(Magic.begin(), Magic.end(), out.begin());
    bytes[Magic.size()] = Version;
    randombytes_buf(bytes + HeaderSize, NonceSize);
    unsigned long long sealed = 0;
    crypto_aead_xchacha20poly1305_ietf_encrypt(bytes + HeaderSize + NonceSize, &sealed,
                                               reinterpret_cast<const unsigned char*>(plain.data()),
                                               plain.size(), bytes, HeaderSize, nullptr,
                                               bytes + HeaderSize, key.data());
    sodium_memzero(key.data(), key.size());
    out.resize(HeaderSize + NonceSize + sealed);
    return out;
}

std::shared_ptr<Model> EncryptedSpatialModelFormat::Read(std::string_view bytes,
                                                         const std::wstring& source) const {
    if (bytes.substr(0, Armour.size()) == Armour) {
        auto inner = TextToBytes(qtxt::UTF8toDefaultWide(bytes));
        return Read(inner, source);
    }
    if (bytes.substr(0, Magic.size()) != Magic)
        QUARN_THROW(L"Cannot read " + source +
                    L": it is not an encrypted model (no \"LXMC\" header).");
    if (bytes.size() < HeaderSize)
        QUARN_THROW(L"Cannot read " + source + L": the file is cut short in its header.");
    auto version = static_cast<unsigned char>(bytes[Magic.size()]);
    if (version != Version)
        QUARN_THROW(L"Cannot read " + source + L": encrypted format version " +
                    std::to_wstring(version) + L" is not the version this program reads (" +
                    std::to_wstring(Version) + L").");
    if (bytes.size() < HeaderSize + NonceSize + TagSize)
        QUARN_THROW(L"Cannot read " + source + L": the file is cut short (" +
                    std::to_wstring(bytes.size()) + L" bytes).");
    auto key = ModelKey(false);
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    std::string plain(bytes.size() - HeaderSize - NonceSize - TagSize, '\0');
    unsigned long long opened = 0;
    int status = crypto_aead_xchacha20poly1305_ietf_decrypt(
        reinterpret_cast<unsigned char*>(plain.data()), &opened, nullptr,
        data + HeaderSize + NonceSize, bytes.size() - HeaderSize - NonceSize, data, HeaderSize,
        data + HeaderSize, key.data());
    sodium_memzero(key.data(), key.size());
    if (status != 0)
        QUARN_THROW(
            L"Cannot read " + source +
            L": it cannot be decrypted (a different key, or the file was altered or damaged).");
    plain.resize(opened);
    auto model = ReadModelXml(plain, source);
    sodium_memzero(plain.data(), plain.size());
    ForbidPlain(*model);
    return model;
}

std::wstring EncryptedSpatialModelFormat::BytesToText(const std::string& bytes) const {
    StartSodium();
    std::string text(sodium_base64_encoded_len(bytes.size(), sodium_base64_VARIANT_ORIGINAL), '\0');
    sodium_bin2base64(text.data(), text.size(),
                      reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(),
                      sodium_base64_VARIANT_ORIGINAL);
    text.resize(text.size() - 1);
    return qtxt::UTF8toDefaultWide(std::string(Armour) + text);
}

std::string EncryptedSpatialModelFormat::TextToBytes(const std::wstring& text) const {
    StartSodium();
    auto narrow = qtxt::DefaultWideToUTF8(text);
    if (narrow.compare(0, Armour.size(), Armour) != 0)
        QUARN_THROW(
            "The text is not an encrypted model (its first line is not "
            "\"LATTIX-ENCRYPTED-MODEL\").");
    std::string_view body(narrow);
    body.remove_prefix(Armour.size());
    std::string bytes(body.size(), '\0');
    std::size_t length = 0;
    if (sodium_base642bin(reinterpret_cast<unsigned char*>(bytes.data()), bytes.size(), body.data(),
                          body.size(), " \t\r\n", &length, nullptr,
                          sodium_base64_VARIANT_ORIGINAL) != 0)
        QUARN_THROW("The encrypted model text is not valid base64.");
    bytes.resize(length);
    return bytes;
}

}  // namespace Velmar::Lattix::format

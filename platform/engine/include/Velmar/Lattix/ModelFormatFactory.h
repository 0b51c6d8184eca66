#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Velmar/Lattix/Format/ModelFormat.h"

namespace Velmar::Lattix {

class Model;

// The registry of model file formats: saves models to files and text, and opens them again.
// Built in: "SpatialModelFormat" (".gmdx", XML) and "EncryptedSpatialModelFormat" (".gmdc", the
// same XML under authenticated encryption); docs/model-format.md describes both. URIs are file
// paths or "file://" URIs. Every call is safe from any thread. Using the factory (or loading the
// engine library) installs the model reader of the user operator folder in OperatorFactory.
class ModelFormatFactory {
public:
    static constexpr const wchar_t* PlainFormatName = L"SpatialModelFormat";
    static constexpr const wchar_t* EncryptedFormatName = L"EncryptedSpatialModelFormat";

    // Writes model to the file that uri names, atomically (a temporary file beside it, then a
    // rename): on failure the old file is untouched. An empty format name picks the format by the
    // file's extension (plain for an unknown one). model must not be null. Raises
    // QuarnLog::Exception naming the file and the cause.
    static void Save(const std::shared_ptr<Model>& model, const std::wstring& uri,
                     const std::wstring& formatName = {});
    // Reads a new model from the file that uri names. An empty format name detects the format from
    // the content. A missing, damaged or hostile file raises QuarnLog::Exception naming the file
    // and the place.
    static std::shared_ptr<Model> Open(const std::wstring& uri,
                                       const std::wstring& formatName = {});

    // The model as wide text (the plain format's XML; an encrypted model is armoured text).
    static std::wstring SaveToBuffer(const std::shared_ptr<Model>& model,
                                     const std::wstring& formatName);
    // A new model from text made by SaveToBuffer; an empty format name detects it.
    static std::shared_ptr<Model> OpenFromBuffer(const std::wstring& text,
                                                 const std::wstring& formatName = {});

    // The format of a name, or null.
    static std::shared_ptr<const ModelFormat> GetFormat(const std::wstring& formatName);
    // The format whose extension ends path (case-insensitive), or null.
    static std::shared_ptr<const ModelFormat> GetFormatForPath(const std::wstring& path);
    // Every format name, in registration order.
    static std::vector<std::wstring> GetFormatNames();
    // Adds or replaces a format (by its name). format must not be null.
    static void Register(std::shared_ptr<const ModelFormat> format);

    // The file path a "file://" URI or a plain path names. Other schemes raise QuarnLog::Exception.
    static std::wstring PathFromUri(const std::wstring& uri);
};

}  // namespace Velmar::Lattix

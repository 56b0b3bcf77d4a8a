// Reading of the XML configuration file into the configuration object.
#include "config/XMLConfigData.h"
#include "platform/File.h"
#include "platform/ThreadEnd.h"
#include "platform/agent/Logging.h"
#include "platform/portable/ScopeGuard.h"

#include <new>
#include <optional>
#include <stdexcept>
#include <utility>

namespace {

/// The document in the file. None when it cannot be read; the reason is logged then.
std::optional<config::Document> readFile(const std::string& path) try {
    const platform::File file = platform::File::open(path, platform::OpenMode::Read);
    std::optional<std::string> contents =
        file.isOpen() ? file.readWhole(config::Document::kLargest + 1) : std::nullopt;
    if (!contents) {
        return std::nullopt;
    }
    config::Document document = config::readDocument(std::move(*contents));
    if (!document.refusal) {
        return document;
    }
    KRXLog(level::kForce,
           document.refusal->kind == config::Refusal::Kind::noParser ? "XML toolkit initialization error: %s"
                                                                     : " Error Parsing File: %s",
           document.refusal->text().c_str());
    return std::nullopt;
} catch (const std::bad_alloc&) {
    return std::nullopt;  // memory ran out before there was a document to refuse
}

}  // namespace

std::shared_ptr<const XMLConfigData> loadConfiguration(const std::string& path) {
    const std::shared_ptr<XMLConfigData> configuration = XMLConfigData::getInstance(path);
    if (configuration != nullptr) {
        const platform::ScopeGuard publication([&] { XMLConfigData::publish(configuration); });
        configuration->parseConfigFile();
    }
    return configuration;
}

void XMLConfigData::parseConfigFile() {
    const std::optional<config::Document> document = readFile(configFilePath_);
    if (!document) {
        throw std::runtime_error(" Error Parsing the File: " + configFilePath_ +
                                 " !!! \n  Check the File Location & Format if the file is present \n ");
    }
    for (const config::Element* child = document->root()->firstChild; child != nullptr; child = child->next) {
        try {
            read(*child);
        } catch (const platform::ForcedUnwind&) {
            throw;
        } catch (...) {
            KRXLog(level::kForce, " Error while parsing file: %s", configFilePath_.c_str());
        }
    }
}

void XMLConfigData::read(const config::Element& child) {
    for (const config::Reading& reading : config::readingsIn(child)) {
        try {
            config::apply(reading, settings_);
        } catch (const std::bad_alloc&) {
            if (reading.row->kind != config::Kind::messages) {
                throw;
            }
            KRXLog(level::kForce, "new Failed in handleElement of XMLConfigData. \n");
        }
    }
}

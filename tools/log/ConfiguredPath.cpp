#include "ConfiguredPath.h"

#include "config/XMLConfigData.h"

#include <algorithm>
#include <stdexcept>

namespace logreader {

std::string configuredPath(const std::string& configuration) {
    try {
        if (const auto data = loadConfiguration(configuration)) {
            std::string path = data->getLogFilePath();
            std::replace(path.begin(), path.end(), '\\', '/');
            XMLConfigData::destroyInstance();
            return path;
        }
    } catch (const std::runtime_error&) {
        XMLConfigData::destroyInstance();
    }
    throw std::runtime_error(configuration + ": not a configuration file that can be read");
}

}  // namespace logreader

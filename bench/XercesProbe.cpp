// Plain use of Xerces-C, as a library of its own so that its loading can be measured too.
#include <cstddef>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#define EXPORTED __attribute__((visibility("default")))

extern "C" {

EXPORTED void probeInitialize() {
    xercesc::XMLPlatformUtils::Initialize();
}

EXPORTED void probeParse(const char* text, std::size_t size) {
    xercesc::XercesDOMParser parser;
    parser.parse(xercesc::MemBufInputSource(reinterpret_cast<const XMLByte*>(text), size, "configuration"));
}

EXPORTED void probeTerminate() {
    xercesc::XMLPlatformUtils::Terminate();
}
}

#include "config/LimitedDOMParser.h"

#include <xercesc/internal/ReaderMgr.hpp>
#include <xercesc/internal/XMLReader.hpp>
#include <xercesc/internal/XMLScanner.hpp>
#include <xercesc/validators/DTD/DTDEntityDecl.hpp>

namespace {

constexpr std::size_t kDeepestNesting = 256;

bool isNamed(const XMLCh* text) noexcept {
    return text != nullptr && *text != 0;
}

}  // namespace

LimitedDOMParser::LimitedDOMParser(xercesc::MemoryManager* memory) : XercesDOMParser(nullptr, memory) {
    setValidationScheme(Val_Never);
    setLoadExternalDTD(false);
    setDisableDefaultEntityResolution(true);
    getScanner()->setErrorReporter(this);
}

void LimitedDOMParser::startElement(const xercesc::XMLElementDecl& element, unsigned int urlId,
                                    const XMLCh* prefix,
                                    const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes,
                                    XMLSize_t attributeCount, bool isEmpty, bool isRoot) {
    if (depth_ >= kDeepestNesting) {
        throw Refused();
    }
    if (!isEmpty) {
        ++depth_;
    }
    XercesDOMParser::startElement(element, urlId, prefix, attributes, attributeCount, isEmpty, isRoot);
}

void LimitedDOMParser::endDocument() {
    // The toolkit takes a NUL behind the root element for the end.
    if (getScanner()->getReaderMgr()->getCurrentReader()->charsLeftInBuffer() > 0) {
        throw Refused();
    }
    XercesDOMParser::endDocument();
}

void LimitedDOMParser::endElement(const xercesc::XMLElementDecl& element, unsigned int urlId, bool isRoot,
                                  const XMLCh* prefix) {
    XercesDOMParser::endElement(element, urlId, isRoot, prefix);
    if (depth_ > 0) {
        --depth_;
    }
}

void LimitedDOMParser::doctypeDecl(const xercesc::DTDElementDecl& element, const XMLCh* publicId,
                                   const XMLCh* systemId, bool hasInternalSubset, bool hasExternalSubset) {
    if (hasExternalSubset || isNamed(publicId) || isNamed(systemId)) {
        throw Refused();
    }
    XercesDOMParser::doctypeDecl(element, publicId, systemId, hasInternalSubset, hasExternalSubset);
}

void LimitedDOMParser::entityDecl(const xercesc::DTDEntityDecl& entity, bool isParameterEntity,
                                  bool isIgnored) {
    if (entity.isExternal()) {
        throw Refused();
    }
    XercesDOMParser::entityDecl(entity, isParameterEntity, isIgnored);
}

void LimitedDOMParser::error(unsigned int /*code*/, const XMLCh* /*domain*/,
                             xercesc::XMLErrorReporter::ErrTypes type, const XMLCh* /*text*/,
                             const XMLCh* /*systemId*/, const XMLCh* /*publicId*/, XMLFileLoc /*line*/,
                             XMLFileLoc /*column*/) {
    if (type == ErrType_Fatal) {
        throw Refused();
    }
}

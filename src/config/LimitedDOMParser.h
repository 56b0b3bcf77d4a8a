#pragma once

#include <cstddef>

#include <xercesc/parsers/XercesDOMParser.hpp>

/// A DOM parser with the toolkit's default settings, made safe for documents from a careless or hostile hand.
/// It refuses, by a `Refused` exception: text that is no well-formed XML, a document type declaration that
/// names an external subset or entity (nothing outside the document is ever opened), and elements nested
/// deeper than 256. Its memory is the bound for everything else.
class LimitedDOMParser final : public xercesc::XercesDOMParser {
  public:
    struct Refused {};

    explicit LimitedDOMParser(xercesc::MemoryManager* memory);

    void startElement(const xercesc::XMLElementDecl& element, unsigned int urlId, const XMLCh* prefix,
                      const xercesc::RefVectorOf<xercesc::XMLAttr>& attributes, XMLSize_t attributeCount,
                      bool isEmpty, bool isRoot) override;
    void endDocument() override;
    void endElement(const xercesc::XMLElementDecl& element, unsigned int urlId, bool isRoot,
                    const XMLCh* prefix) override;
    void doctypeDecl(const xercesc::DTDElementDecl& element, const XMLCh* publicId, const XMLCh* systemId,
                     bool hasInternalSubset, bool hasExternalSubset) override;
    void entityDecl(const xercesc::DTDEntityDecl& entity, bool isParameterEntity, bool isIgnored) override;

    void error(unsigned int code, const XMLCh* domain, xercesc::XMLErrorReporter::ErrTypes type,
               const XMLCh* text, const XMLCh* systemId, const XMLCh* publicId, XMLFileLoc line,
               XMLFileLoc column) override;

  private:
    std::size_t depth_ = 0;
};

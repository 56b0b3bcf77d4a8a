// An XML toolkit that fails while it parses. This program's function stands before the toolkit's own.
#include "config/XMLConfigData.h"
#include "lib/AgentHost.h"
#include "support/Lines.h"
#include "support/Rows.h"
#include "support/Workspace.h"

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>
#include <xercesc/dom/DOMException.hpp>
#include <xercesc/parsers/AbstractDOMParser.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/RuntimeException.hpp>

namespace {

void (*insteadOfParse)() = nullptr;

}  // namespace

XERCES_CPP_NAMESPACE_BEGIN

__attribute__((visibility("default"))) void AbstractDOMParser::parse(const InputSource& /*source*/) {
    insteadOfParse();
}

XERCES_CPP_NAMESPACE_END

namespace {

const std::string kNotParsed =
    " Error Parsing the File: FILE !!! \n  Check the File Location & Format if the file is present \n ";

struct ParseRow {
    support::RowName name;
    void (*parse)();
    std::string lines;
    std::string error;
};

const support::Rows<ParseRow> parseRows(
    "ToolkitFailure/WhileItParses",
    {
        {"message of the toolkit",
         [] {
             throw xercesc::RuntimeException("Source.cpp", 1, xercesc::XMLExcepts::Trans_CantCreateCvtrFor);
         },
         "250  Error Parsing File: unable to create converter for '{0}' encoding|",
         "unable to create converter for '{0}' encoding"},
        {"message of the document", [] { throw xercesc::DOMException(xercesc::DOMException::SYNTAX_ERR); },
         "250  DOM Exception: invalid or illegal string|", "invalid or illegal string"},
        {"memory", [] { throw xercesc::OutOfMemoryException(); }, "", kNotParsed},
        {"anything else", [] { throw 1; }, "", kNotParsed},
        {"no document", [] {}, "", kNotParsed},
    },
    [](const ParseRow& row) {
        const support::Workspace workspace;
        workspace.write("config.xml", "<z/>");
        const std::string path = workspace.path("config.xml").string();
        support::Lines lines;
        const agent::AgentHost host({&lines, nullptr, nullptr});
        insteadOfParse = row.parse;
        try {
            loadConfiguration(path);
            ADD_FAILURE() << "nothing was parsed";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(support::replaced(error.what(), path, "FILE"), row.error);
        }
        EXPECT_EQ(lines.all, row.lines);
        ASSERT_NE(XMLConfigData::instance(), nullptr);
        EXPECT_EQ(XMLConfigData::instance()->getFileSize(), "5000000");
        XMLConfigData::destroyInstance();
    });

}  // namespace

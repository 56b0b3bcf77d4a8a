#include "lib/Serializer.h"
#include "platform/agent/Messaging.h"
#include "support/Rows.h"
#include "support/Xml.h"

#include <cstring>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

namespace KRX::Messaging {
namespace {

/// Two simple sub-elements and one element object, all kinds of answers.
class Order final : public Serializable {
  public:
    explicit Order(Serializable* object) : Serializable("order", nullptr, 0, 1) {
        RegisterAttribute("xmlns", 0, nullptr);
        RegisterAttribute("lang", 0, nullptr);
        RegisterSubElement("kept", 1, 1, nullptr);
        RegisterSubElement("given", 1, 1, nullptr);
        RegisterSubElement("object", object, 1, nullptr);
    }

    std::int8_t SetAttributeText(const char*, const char*) override { return -1; }
    std::int8_t SetSubElementText(const char* name, const char* text) override {
        read += std::string(name) + "=" + text + ";";
        return std::strcmp(text, "bad") == 0 ? -1 : 0;
    }
    const char* GetAttributeText(const char* name, bool& release) override {
        if (std::strcmp(name, "xmlns") != 0) {
            return nullptr;  // The flag stays as it was.
        }
        release = false;
        return "urn:a\"b";
    }
    const char* GetSubElementText(const char* name, bool& release, unsigned int /*index*/) override {
        release = std::strcmp(name, "given") == 0 && given != nullptr;
        return release                          ? std::strcpy(new char[std::strlen(given) + 1], given)
               : std::strcmp(name, "kept") == 0 ? kept
                                                : nullptr;
    }
    bool HasElementText() override { return false; }

    std::string read;
    const char* kept = nullptr;
    const char* given = nullptr;
};

std::string refusal(Order& order, const std::string& xml) {
    try {
        agent::readMessage(xml, order);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "read " + order.read;
}

struct ReadingRow {
    support::RowName name;
    std::string xml;
    const char* expected;
};

const support::Rows<ReadingRow> readingRows(
    "Messaging/Reading",
    {
        {"empty", "<order/>", "read "},
        {"declared prefixes", "<order xmlns='urn:x' xmlns:y='urn:y'><kept>1</kept></order>", "read kept=1;"},
        {"kinds of text",
         "<y:order xmlns:y='urn:y'> <y:given> a&lt;<![CDATA[&b]]><!-- --> </y:given>\n</y:order>",
         "read given= a<&b ;"},
        {"object", "<?xml version='1.0'?><order><kept/><object>text</object></order>", "read kept=;"},
        {"other root", "<other/>", "expected element 'order', received 'other'"},
        {"root in capitals", "<Order/>", "expected element 'order', received 'Order'"},
        {"refused attribute", "<order lang='en'/>", "element 'order' refused attribute 'lang'"},
        {"unknown sub-element", "<order><Kept>1</Kept></order>", "element 'order' has no sub-element 'Kept'"},
        {"refused text", "<order><kept>bad</kept></order>", "element 'order' refused sub-element 'kept'"},
        {"one too many", "<order><kept>1</kept><kept>2</kept></order>",
         "element 'order' has more sub-elements 'kept' than it may have"},
        {"element in a text", "<order><kept><a/></kept></order>", "element 'kept' takes nothing but text"},
        {"text of its own", "<order>text</order>", "element 'order' takes no text of its own"},
        {"mismatched tag", "<order><kept>1</order>", "line 1: mismatched tag"},
        {"nothing", "", "line 1: no element found"},
        {"second root", "<order/>\n<order/>", "line 2: junk after document element"},
        {"document type", "<!DOCTYPE order [<!ENTITY a 'a'>]><order>&a;</order>",
         "line 1: a document type declaration is not accepted"},
        {"too deep", support::repeated("<order>", 1000), "line 1: elements are nested too deeply"},
    },
    [](const ReadingRow& row) {
        SerializableString object("object", nullptr);
        Order order(&object);
        EXPECT_EQ(refusal(order, row.xml), row.expected);
        EXPECT_STREQ(object.GetValue(), row.xml.find("<object>") == std::string::npos ? nullptr : "text");
    });

TEST(Messaging, Writing) {
    SerializableString object("object", nullptr);
    Order order(&object);
    Order without(nullptr);
    object.SetElementName("Result");
    EXPECT_EQ(agent::writeMessage(without), "<order xmlns=\"urn:a&quot;b\"/>");
    EXPECT_EQ(agent::writeMessage(order), "<order xmlns=\"urn:a&quot;b\"><Result/></order>");
    object.SetValue("Thread exited.");
    order.kept = "a<b&c>\r\x01";
    order.given = "-1";
    EXPECT_EQ(agent::writeMessage(order),
              "<order xmlns=\"urn:a&quot;b\"><kept>a&lt;b&amp;c&gt;&#13;?</kept><given>-1</given>"
              "<Result>Thread exited.</Result></order>");
}

}  // namespace
}  // namespace KRX::Messaging

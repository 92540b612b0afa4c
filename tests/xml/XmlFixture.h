// What the tests of the XML layer share.
#pragma once

#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestSystem.h"
#include "vnbytstr/XercesWrapper.h"

#include <string>

#include <gtest/gtest.h>

namespace vnbytstr::test {

/// A wrapper whose parse errors go to `m_system` instead of the terminal.
class XmlTest : public ::testing::Test {
protected:
    XmlTest() : m_installed(m_system) {}

    bool Load(const std::string& text) {
        return m_xml.LoadXML(CString(text.data(), static_cast<int>(text.size())));
    }
    XMLElement Root() {
        XMLElement root;
        EXPECT_TRUE(m_xml.GetRootElement(root));
        return root;
    }
    XMLNode Child(const XMLNode& parent, const char* name) {
        XMLNode child;
        EXPECT_TRUE(m_xml.AppendChildElement(parent, name, child)) << name;
        return child;
    }
    /// The document as text, "" when there is none.
    std::string Text() {
        CString text;
        m_xml.GetXML(text);
        return {text, static_cast<std::size_t>(text.GetLength())};
    }
    std::string Attribute(const XMLNode& node, const char* name, bool decode = false) {
        CString value("untouched");
        EXPECT_TRUE(m_xml.GetStringAttribute(node, name, value, decode)) << name;
        return {value, static_cast<std::size_t>(value.GetLength())};
    }

    TestSystem m_system;
    ScopedSystem m_installed;
    TemporaryFolder m_files;
    CXercesWrapper m_xml;
};

} // namespace vnbytstr::test

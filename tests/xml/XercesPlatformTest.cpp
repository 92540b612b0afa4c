// How often the parser platform is begun and ended.
#include "vnbytstr/XercesWrapper.h"

#include <xercesc/util/PlatformUtils.hpp>

#include <algorithm>
#include <memory>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

namespace vnbytstr::test {
namespace {

bool IsUp() { return xercesc::XMLPlatformUtils::fgMemoryManager != nullptr; }

void Use(CXercesWrapper& xml) {
    EXPECT_TRUE(xml.IsInitialized());
    EXPECT_TRUE(xml.LoadXML("<r><a/></r>"));
    EXPECT_TRUE(xml.Create("made"));
}

TEST(XercesPlatformTest, LivesFromTheFirstWrapperToTheLast) {
    ASSERT_FALSE(IsUp());
    std::vector<int> order{0, 1, 2};
    do { // every order of destruction
        std::vector<std::unique_ptr<CXercesWrapper>> wrappers;
        for (int i = 0; i < 3; ++i) {
            wrappers.push_back(std::make_unique<CXercesWrapper>());
            EXPECT_EQ(CXercesWrapper::m_iInstanceCounter, i + 1);
        }
        for (const auto& wrapper : wrappers)
            Use(*wrapper);
        for (int i = 0; i < 3; ++i) {
            EXPECT_TRUE(IsUp());
            wrappers[static_cast<std::size_t>(order[static_cast<std::size_t>(i)])].reset();
            EXPECT_EQ(CXercesWrapper::m_iInstanceCounter, 2 - i);
            for (const auto& wrapper : wrappers) {
                if (wrapper)
                    Use(*wrapper);
            }
        }
        EXPECT_FALSE(IsUp());
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST(XercesPlatformTest, AnApplicationsOwnUseIsLeftAlone) {
    using xercesc::XMLPlatformUtils;
    ASSERT_FALSE(IsUp());
    XMLPlatformUtils::Initialize(); // before us, and longer
    const auto* const theirs = XMLPlatformUtils::fgMemoryManager;
    {
        CXercesWrapper xml;
        Use(xml);
        EXPECT_EQ(XMLPlatformUtils::fgMemoryManager, theirs);
    }
    EXPECT_EQ(XMLPlatformUtils::fgMemoryManager, theirs);
    {
        CXercesWrapper xml; // theirs ends while ours goes on
        XMLPlatformUtils::Terminate();
        EXPECT_TRUE(IsUp());
        Use(xml);
    }
    EXPECT_FALSE(IsUp());
    {
        CXercesWrapper xml;
        XMLPlatformUtils::Initialize(); // after us
        Use(xml);
    }
    EXPECT_TRUE(IsUp());
    {
        CXercesWrapper again;
        Use(again);
    }
    XMLPlatformUtils::Terminate();
    EXPECT_FALSE(IsUp());
}

TEST(XercesPlatformTest, MessagesFromAFolderKeepThePlatform) {
    ASSERT_FALSE(IsUp());
    EXPECT_TRUE(XMLMessagesInitialize("/usr/share"));
    {
        CXercesWrapper xml;
        Use(xml);
    }
    EXPECT_TRUE(IsUp());
    xercesc::XMLPlatformUtils::Terminate();
    EXPECT_FALSE(IsUp());
}

} // namespace
} // namespace vnbytstr::test

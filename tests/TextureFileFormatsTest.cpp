// SPDX-License-Identifier: MIT
// The formats that come with the library, and when they are registered.
#include "GLRuntimeTestAccess.h"
#include "support/FakeDriver.h"
#include "support/LogCapture.h"

#include <VrkGL/ASTCReader.h>
#include <VrkGL/GLUtilities.h>
#include <VrkGL/HDRReader.h>
#include <VrkGL/KTXReader.h>
#include <VrkGL/TextureIO.h>

#include <QByteArray>

#include <memory>

namespace Harrow::Vrk::Test
{
namespace
{

class TextureFileFormats : public FakeDriverTest
{
protected:
    void SetUp() override
    {
        FakeDriverTest::SetUp();
        DeleteAllRegisteredTextureRecognisers();
        GLRuntimeTestAccess::resetInitialisedFlag();
    }

    void TearDown() override
    {
        DeleteAllRegisteredTextureRecognisers();
        FakeDriverTest::TearDown();
    }

    /// Whether bytes that begin so are claimed by a reader of this class.
    template <typename Reader> static bool isClaimed(const QByteArray& begin)
    {
        QByteArray bytes = begin.leftJustified(128, '\0');
        const std::unique_ptr<TextureLoader> loader(IdentifyTextureFromMemory(
            reinterpret_cast<unsigned char*>(bytes.data()), static_cast<size_t>(bytes.size()), QStringLiteral("x")));
        return dynamic_cast<Reader*>(loader.get()) != nullptr;
    }

    static const QByteArray kHdr;
    static const QByteArray kKtx;
    static const QByteArray kAstc;
};

const QByteArray TextureFileFormats::kHdr("#?RADIANCE\n\n-Y 1 +X 1\n");
const QByteArray TextureFileFormats::kKtx("\xABKTX 11\xBB\r\n\x1A\n");
const QByteArray TextureFileFormats::kAstc("\x13\xAB\xA1\x5C\x04\x04\x01");

} // namespace

TEST_F(TextureFileFormats, AreNotThereBeforeOpenGLIsInitialised)
{
    EXPECT_FALSE(isClaimed<HDRReader>(kHdr));
    EXPECT_FALSE(isClaimed<KTXReader>(kKtx));
    EXPECT_FALSE(isClaimed<ASTCReader>(kAstc));
}

TEST_F(TextureFileFormats, AreRegisteredByItsInitialisation)
{
    EXPECT_TRUE(initializeGLFunctions());
    EXPECT_TRUE(isClaimed<HDRReader>(kHdr));
    EXPECT_TRUE(isClaimed<KTXReader>(kKtx));
    EXPECT_TRUE(isClaimed<ASTCReader>(kAstc));
}

TEST_F(TextureFileFormats, AreRegisteredAlsoWhenItFails)
{
    driver.refuse("glGetStringi");
    const LogCapture log;
    EXPECT_FALSE(initializeGLFunctions());
    EXPECT_TRUE(isClaimed<HDRReader>(kHdr));
    EXPECT_TRUE(isClaimed<KTXReader>(kKtx));
    EXPECT_TRUE(isClaimed<ASTCReader>(kAstc));
    driver.offer("glGetStringi");
    EXPECT_TRUE(initializeGLFunctions());
}

TEST_F(TextureFileFormats, AreNotRegisteredAgainOnceItHasSucceeded)
{
    EXPECT_TRUE(initializeGLFunctions());
    DeleteAllRegisteredTextureRecognisers();
    EXPECT_TRUE(initializeGLFunctions());
    EXPECT_FALSE(isClaimed<KTXReader>(kKtx));
}

} // namespace Harrow::Vrk::Test

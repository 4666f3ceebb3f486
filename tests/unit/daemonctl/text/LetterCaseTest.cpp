#include "LetterCase.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using client::v0::WithoutCase;

TEST(LetterCase, Letters_of_ASCII_become_capitals)
{
    EXPECT_EQ(WithoutCase("C:\\App\\video-2.exe {}"), "C:\\APP\\VIDEO-2.EXE {}");
    EXPECT_EQ(WithoutCase(""), "");
}

TEST(LetterCase, Letters_beyond_ASCII_pair_as_in_names_of_files)
{
    EXPECT_EQ(WithoutCase("vidéo.exe"), "VIDÉO.EXE");
    EXPECT_EQ(WithoutCase("VIDÉO.EXE"), "VIDÉO.EXE");
    EXPECT_EQ(WithoutCase("größe-ÿ"), "GRÖßE-Ÿ"); // a sharp s has no capital letter in names
    EXPECT_EQ(WithoutCase("σκηνή"), "ΣΚΗΝΉ");
    EXPECT_EQ(WithoutCase("камера.exe"), "КАМЕРА.EXE");
}

TEST(LetterCase, Other_characters_stay)
{
    EXPECT_EQ(WithoutCase("映像.exe"), "映像.EXE");
    EXPECT_EQ(WithoutCase("🎥.exe"), "🎥.EXE");
}

TEST(LetterCase, Zero_characters_and_invalid_UTF_8_end_no_text)
{
    EXPECT_EQ(WithoutCase(std::string("é\0é", 5)), std::string("É\0É", 5));
    EXPECT_TRUE(WithoutCase("é\xFFx").ends_with("X"));
}

} // namespace
} // namespace vqrx::test

#include "exception_utils/ExceptionTemplate.h"

#include "exception_utils/VantoroException.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

class File;
class Text;
using cpp_utils::exception_utils::v1::ExceptionTemplate;
using cpp_utils::exception_utils::v1::VantoroException;
using FileError = ExceptionTemplate<File, VantoroException>;
using TextError = ExceptionTemplate<Text, VantoroException>;

} // namespace

TEST(ExceptionTemplate, carries_its_message)
{
    EXPECT_STREQ("invalid path []", FileError("invalid path []").what());
}

TEST(ExceptionTemplate, is_caught_as_the_library_root_and_as_a_standard_exception)
{
    EXPECT_THROW(throw FileError("x"), VantoroException);
    EXPECT_THROW(throw FileError("x"), std::exception);
}

TEST(ExceptionTemplate, is_not_caught_as_another_family)
{
    std::string caught;
    try {
        throw FileError("x");
    } catch (const TextError&) {
        caught = "text";
    } catch (const FileError&) {
        caught = "file";
    }
    EXPECT_EQ("file", caught);
}

} // namespace vqrx::test

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

TEST(ExceptionTemplate, what_returns_the_message)
{
    EXPECT_STREQ("invalid path []", FileError("invalid path []").what());
}

TEST(ExceptionTemplate, Handlers_for_VantoroException_and_for_std_exception_catch_it)
{
    EXPECT_THROW(throw FileError("x"), VantoroException);
    EXPECT_THROW(throw FileError("x"), std::exception);
}

TEST(ExceptionTemplate, A_handler_for_another_tag_does_not_catch_it)
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

// Keeps the library from being empty on hosts where everything else is Windows-only.
namespace vqrx::test {
const char* SupportLibraryName() noexcept;
const char* SupportLibraryName() noexcept
{
    return "test_support";
}
} // namespace vqrx::test

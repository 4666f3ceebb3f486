#pragma once

#include <deque>
#include <mutex>
#include <optional>
#include <type_traits>
#include <utility>

/// Switches between the code as it is written and one small change of it. tools/mutants puts this
/// header before the first line of each source that it changes, in a copy of the repository.
namespace mutant {

/// Returns whether the environment variable DM_MUTANT has this number. Notes that the place was
/// reached, if DM_MUTANT_REACHED names a file. Keeps the last error of the thread. Any thread.
bool IsChosen(int id) noexcept;

/// IsChosen for code that may also run in the compiler, which knows no environment.
constexpr bool Is(int id) noexcept
{
    return !std::is_constant_evaluated() && IsChosen(id);
}

template <typename T>
constexpr bool kIsOptional = false;
template <typename T>
constexpr bool kIsOptional<std::optional<T>> = true;

template <typename T>
concept Container = requires(T value)
{
    value.empty();
    value.clear();
    T{};
};

/// The types whose values Other() can change.
template <typename T>
concept Changeable = std::is_scalar_v<T> || kIsOptional<T> || Container<T>;

/// Returns another value of the type:
/// - truth value: the opposite,
/// - number: 1 for 0, 0 for 1, else the next number,
/// - enumerator: number 1 for number 0, else the number before it,
/// - C string: empty, or "x" for null and for an empty one; any other pointer: null,
/// - optional: none, or a default value for none,
/// - container: empty, or with one element if it was empty and can be resized.
template <Changeable T>
constexpr T Changed(const T& value)
{
    if constexpr (std::is_same_v<T, bool>) {
        return !value;
    } else if constexpr (std::is_enum_v<T>) {
        const auto number = static_cast<std::underlying_type_t<T>>(value);
        return static_cast<T>(number == 0 ? 1 : number - 1);
    } else if constexpr (std::is_arithmetic_v<T>) {
        return static_cast<T>(value == 0 ? 1 : value == 1 ? 0 : value + 1);
    } else if constexpr (std::is_same_v<T, const char*>) {
        return value != nullptr && *value != '\0' ? "" : "x";
    } else if constexpr (std::is_scalar_v<T>) {
        return T{};
    } else if constexpr (kIsOptional<T>) {
        if (value) {
            return T{};
        }
        if constexpr (std::is_default_constructible_v<typename T::value_type>) {
            return T{typename T::value_type{}};
        } else {
            return T{};
        }
    } else {
        T other{};
        if constexpr (requires { other.resize(1); }) {
            if (value.empty()) {
                other.resize(1);
            }
        }
        return other;
    }
}

/// Returns value, or Changed(value) if the mutant is chosen.
template <typename T>
requires std::is_scalar_v<T>
constexpr T Other(int id, T value)
{
    return Is(id) ? Changed(value) : value;
}

/// Keeps a value until the end of the program. Not in a thread_local variable: when a thread ends,
/// mingw's run time frees the memory of such variables before their destructors run.
template <typename T>
const T& Kept(T value)
{
    static std::mutex mutex;
    static auto* const all = new std::deque<T>; // reachable, so it is no leak
    const std::lock_guard lock(mutex);
    all->push_back(std::move(value));
    return all->back();
}

/// Returns value, or a changed copy of it that lives until the end of the program.
template <typename T>
requires(Changeable<T> && !std::is_scalar_v<T>) const T& Other(int id, const T& value)
{
    return Is(id) ? Kept(Changed(value)) : value;
}

} // namespace mutant

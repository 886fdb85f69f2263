// Any error value an item can fail with, kept with its type: its message and the permission test.
#pragma once

#include <concepts>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <type_traits>

namespace orbisk {

/// An error type that says what went wrong in the user's words.
template <class E>
concept DescribedError = requires(const E& error)
{
    {
        error.errorDescription()
        } -> std::convertible_to<std::string>;
};

/// A copyable holder of one error value of any type: a DescribedError (FileOperationError and the
/// errors of undo, ZIP and the tools) or a bare std::error_code from the system.
///
/// The permission test looks at what the type offers, in this order; the first that answers decides:
/// 1. a `posixCode()` that is present (FileOperationError's system errors): EACCES or EPERM;
/// 2. a std::error_code of the generic or system category (the POSIX codes): EACCES or EPERM;
/// 3. an `underlyingError()` that is present: EACCES or EPERM when it is a POSIX code, else no;
/// 4. otherwise no.
class AnyError {
public:
    template <class E>
    requires(DescribedError<std::decay_t<E>> && !std::same_as<std::decay_t<E>, AnyError>) AnyError(E&& error)
        : model_(std::make_shared<Model<std::decay_t<E>>>(std::forward<E>(error)))
    {
    }
    AnyError(std::error_code code) : model_(std::make_shared<Model<std::error_code>>(code)) {}

    /// The error's own message, localised; for a system code the system's text for it.
    [[nodiscard]] std::string description() const { return model_->description(); }

    /// Whether the failure was a permission problem (see the class comment).
    [[nodiscard]] bool isPermissionDenied() const { return model_->isPermissionDenied(); }

    /// The held error when it is of type E, else null.
    template <class E> [[nodiscard]] const E* as() const
    {
        const auto* model = dynamic_cast<const Model<E>*>(model_.get());
        return model ? &model->error : nullptr;
    }

private:
    struct Concept {
        virtual ~Concept() = default;
        [[nodiscard]] virtual std::string description() const = 0;
        [[nodiscard]] virtual bool isPermissionDenied() const = 0;
    };

    template <class E> struct Model final : Concept {
        explicit Model(E value) : error(std::move(value)) {}
        [[nodiscard]] std::string description() const override
        {
            if constexpr (std::same_as<E, std::error_code>)
                return error.message();
            else
                return error.errorDescription();
        }
        [[nodiscard]] bool isPermissionDenied() const override { return permissionDenied(error); }
        E error;
    };

    template <class E> static bool permissionDenied(const E& error)
    {
        if constexpr (std::same_as<E, std::error_code>)
            return isPosix(error) && isPermissionCode(error.value());
        if constexpr (requires { error.posixCode(); }) {
            if (const std::optional<int> code = error.posixCode())
                return isPermissionCode(*code);
        }
        if constexpr (requires { error.underlyingError(); }) {
            if (const std::optional<std::error_code> underlying = error.underlyingError())
                return isPosix(*underlying) && isPermissionCode(underlying->value());
        }
        return false;
    }

    static bool isPermissionCode(int code);
    static bool isPosix(const std::error_code& code);

    std::shared_ptr<const Concept> model_;
};

} // namespace orbisk

#pragma once

#include "util/KxHandle.h"
#include "util/KxString.h"

/** A failure with a text. It is thrown as a handle: `catch (KxHandle<KxException>& failure)` catches this class and
    every class derived from it; a handle of a derived class catches only that class and those derived from it. The
    object may outlive the handler. */
class KX_UTIL_API KxException : public KxObject {
public:
    /** The name under which exceptions are traced. */
    static const KxConstString sDebugToken;

    KxException() = default;
    explicit KxException(const char* message) : m_message(message) {}
    explicit KxException(std::string_view message) : m_message(message) {}
    ~KxException() override;

    /** Throws a new exception of this class with the text. */
    [[noreturn]] static void sThrow(std::string_view message);
    /** Throws a handle of the given exception, with the object's own class. The handle adopts the object. */
    [[noreturn]] static void sThrow(KxException* exception);

    const KxString& getExceptionMessage() const { return m_message; }

    KxException* clone() const override;
    /** Writes the message. */
    void display(KxOutputStream& out, bool verbose) const override;

protected:
    KxException(const KxException&) = default;
    /** Throws a handle of this object, with the object's own class. */
    [[noreturn]] virtual void raise();

private:
    KxString m_message;
};

/** Base of an exception class `Self` derived from `Parent`: a Self is thrown, caught and copied as a Self. */
template <class Self, class Parent>
class __attribute__((visibility("default"))) KxExceptionOf : public Parent {
public:
    using HandleParent = Parent;
    using Parent::Parent;

    [[noreturn]] static void sThrow(std::string_view message) { KxException::sThrow(new Self(message)); }

    KxException* clone() const override { return new Self(static_cast<const Self&>(*this)); }

protected:
    [[noreturn]] void raise() override { throw KxHandle<Self>(static_cast<Self*>(this)); }
};

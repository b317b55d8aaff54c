// The platform's SysUtils: exceptions, formatting, conversions, text and file routines.
// Text is single-byte Windows-1251.
#pragma once

#include "rtl/System.h"

#include <exception>
#include <string>

namespace rtl {

// The base of every exception the runtime and the system raise. It is an object of the object
// model, so that its class name can be logged and its class passed as a reference.
class Exception : public TObject, public std::exception {
    RTL_CLASS(Exception, TObject)
public:
    explicit Exception(std::string message = {}) : message_(std::move(message)) {}
    const std::string& Message() const { return message_; }
    void SetMessage(std::string message) { message_ = std::move(message); }
    const char* what() const noexcept override { return message_.c_str(); }

private:
    std::string message_;
};

// Declares an exception class that adds nothing but its name.
#define RTL_EXCEPTION(Name, Parent)                                                                \
    class Name : public Parent {                                                                   \
        RTL_CLASS(Name, Parent)                                                                    \
    public:                                                                                        \
        using Parent::Parent;                                                                      \
    };

RTL_EXCEPTION(EAbort, Exception)
RTL_EXCEPTION(EConvertError, Exception)
RTL_EXCEPTION(EInvalidCast, Exception)
RTL_EXCEPTION(EInvalidPointer, Exception)
RTL_EXCEPTION(EOutOfMemory, Exception)
RTL_EXCEPTION(EIntError, Exception)
RTL_EXCEPTION(ERangeError, EIntError)
RTL_EXCEPTION(EVariantError, Exception)
RTL_EXCEPTION(EPropertyError, Exception)
RTL_EXCEPTION(EPropertyConvertError, Exception)
RTL_EXCEPTION(EListError, Exception)
RTL_EXCEPTION(EStringListError, Exception)
RTL_EXCEPTION(EStreamError, Exception)
RTL_EXCEPTION(EFCreateError, EStreamError)
RTL_EXCEPTION(EFOpenError, EStreamError)
RTL_EXCEPTION(EFilerError, EStreamError)
RTL_EXCEPTION(EReadError, EFilerError)
RTL_EXCEPTION(EWriteError, EFilerError)
RTL_EXCEPTION(EClassNotFound, EFilerError)
RTL_EXCEPTION(EMethodNotFound, EFilerError)
RTL_EXCEPTION(EInvalidImage, EFilerError)
RTL_EXCEPTION(EResNotFound, Exception)
RTL_EXCEPTION(EParserError, Exception)
RTL_EXCEPTION(EComponentError, Exception)
RTL_EXCEPTION(EInvalidOperation, Exception)

// An operating-system error with its code (errno on this platform).
class EOSError : public Exception {
    RTL_CLASS(EOSError, Exception)
public:
    using Exception::Exception;
    int ErrorCode = 0;
};

class EInOutError : public Exception {
    RTL_CLASS(EInOutError, Exception)
public:
    using Exception::Exception;
    int ErrorCode = 0;
};

} // namespace rtl

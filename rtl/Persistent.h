// TPersistent: the base of objects that can be assigned to each other and stored by the filer.
#pragma once

#include "rtl/System.h"

#include <string>

namespace rtl {

class TFiler;

class TPersistent : public TObject {
    RTL_CLASS(TPersistent, TObject)
public:
    // Copies the state of source into this object. When this class doesn't know the source,
    // the source is asked to AssignTo this object; when neither knows the other, EConvertError
    // "Cannot assign a X to a Y" is raised.
    virtual void Assign(TPersistent* source);

    // The dotted name of the object for the designer and the filer: the owner's name path and
    // this object's name, or the class name for an object without an owner.
    virtual std::string GetNamePath() const;

    // Describes properties that are not published but stored: the filer calls this on reading
    // and writing.
    virtual void DefineProperties(TFiler* filer) {}

    virtual TPersistent* GetOwner() const { return nullptr; }

protected:
    virtual void AssignTo(TPersistent* dest);
    [[noreturn]] void AssignError(TPersistent* source);
};

} // namespace rtl

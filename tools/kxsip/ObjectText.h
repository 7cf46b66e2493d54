#pragma once

#include "util/KxByteArrayOutputStream.h"
#include "util/KxObject.h"

#include <string>

/** What the object's serialize writes. */
template <class T>
std::string serialized(const T& object) {
    KxByteArrayOutputStream out;
    object.serialize(out);
    return std::string(out.view());
}

/** The name of the class the object is of, "KxSipViaHeader". */
std::string classNameOf(const KxObject& object);

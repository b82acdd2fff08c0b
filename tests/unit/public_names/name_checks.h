#ifndef TESTS_UNIT_PUBLIC_NAMES_NAME_CHECKS_H
#define TESTS_UNIT_PUBLIC_NAMES_NAME_CHECKS_H

#include <gtest/gtest.h>

#include <type_traits>

// Checks that a name is there under exactly its signature or type. The compiler refuses another
// one, the linker one that is declared only: each check takes the address at run time.

/// Whether a pointer or member pointer that the optimiser cannot see through is set.
template <typename Pointer>
bool isSet(Pointer pointer) {
    Pointer volatile kept = pointer;
    return kept != nullptr;
}

/// A member, operation or field, as a pointer type: MemberOf<int(char) const, Class>.
template <typename Type, typename Class>
using MemberOf = Type Class::*;

/// A function or, with the signature, one overload of it.
#define EXPECT_FUNCTION(signature, name) \
    EXPECT_TRUE(isSet(static_cast<std::add_pointer_t<signature>>(&name)))

/// An operation or field that everybody may use, or that `Class` passes on from its protected base.
#define EXPECT_MEMBER(type, Class, name) \
    EXPECT_TRUE(isSet(static_cast<MemberOf<type, Class>>(&Class::name)))

/// A member that only its class may use. An explicit instantiation may name it, a test may not:
/// `template struct PrivateMember<MemberOf<int, Class>, &Class::name>;` at file scope.
template <typename Pointer, Pointer pointer>
struct PrivateMember {
    static bool isThere() { return isSet(pointer); }
};

/// The same for a nested type.
template <typename Type>
struct PrivateType {
    static Type* nothing() { return nullptr; }
};

#endif

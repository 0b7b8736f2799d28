"""Every way in which a name is spelled, and the identities that are made from names."""

import re
import uuid

# Under this namespace every identity is made, for all time (docs/decisions/006).
NAMESPACE = uuid.UUID("2e7d7a05-d274-41b2-b11d-e146ff0bb733")


def listed(names: str) -> frozenset[str]:
    return frozenset(names.split())


KEYWORDS = listed("""
    alignas alignof and and_eq asm auto bitand bitor bool break case catch char char16_t char32_t
    char8_t class co_await co_return co_yield compl concept const const_cast consteval constexpr
    constinit continue decltype default delete do double dynamic_cast else enum explicit export
    extern false float for friend goto if inline int long mutable namespace new noexcept not not_eq
    nullptr operator or or_eq private protected public register reinterpret_cast requires return
    short signed sizeof static static_assert static_cast struct switch template this thread_local
    throw true try typedef typeid typename union unsigned using virtual void volatile wchar_t while
    xor xor_eq
""")

# What every handle, implementation and builder has already: as accessors, as properties (their
# getters and setters), as operations and as nested types.
ACCESSORS = listed("""
    addRef as checked classInfo create impl isValid metaClass operator removeRef
""")
PROPERTIES = listed("""
    MetaClass Model OldValue Owner OwningProperty PropertyByIndex PropertyValue
""")
OPERATIONS = listed("""
    addRef assign basicDisassociateAll classInfo convertReferencesToProxies convertToProxy
    copyStateFromStorage copyValue createChanges createInto createStorage destroy
    disassociateIncoming doDestroy element generateNewUuid get getMetaClass getModel getOldValue
    getOwner getOwningProperty getPropertyByIndex getPropertyValue has hasPropertyValue id
    inverseAdd inverseContainsProxyTo inverseRemove isDestroyed isProxy model own read removeRef
    resolve revertUnchanged set setPropertyValue target
""")
NESTED = listed("""
    Builder BuilderImpl BuilderWrapper ChildBuilder Constrainables Impl Sequence Set Storage
""")


def lower_camel(name: str) -> str:
    """Lowers the first letter only: ETA becomes eTA."""
    return name[:1].lower() + name[1:]


def upper_camel(name: str) -> str:
    """Raises the first letter only."""
    return name[:1].upper() + name[1:]


def snake(name: str) -> str:
    """As file names are spelled: SimulationRun becomes simulation_run, HTTPLog http_log."""
    return re.sub(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", "_", name).lower()


def scoped(path: str) -> str:
    """A dotted path as C++ spells it."""
    return path.replace(".", "::")


def identity(qualified_name: str) -> uuid.UUID:
    """The identity of whatever has that dotted name."""
    return uuid.uuid3(NAMESPACE, qualified_name)


def is_identifier(name: str) -> bool:
    return re.fullmatch(r"[A-Za-z][A-Za-z0-9_]*", name) is not None and "__" not in name


def is_class_name(name: str) -> bool:
    return is_identifier(name) and name[0].isupper()

#pragma once

namespace Vostrel::libjni {

/// Results of the wrappers' calls and field reads. Nothing in this layer throws for a failed
/// lookup, and a Java exception that the lookup raised stays pending.
constexpr int Success = 0;
constexpr int FieldNotFound = -1;
constexpr int EnumClassNotFound = -2;
constexpr int MethodNotFound = -3;

/// Each reports a failed lookup on standard output, without a line end, and returns its status.
int reportMissingMethod(const char* name, const char* signature);
int reportMissingField(const char* name);
int reportMissingField(const char* name, const char* signature);
int reportMissingEnumClass(const char* className);

} // namespace Vostrel::libjni

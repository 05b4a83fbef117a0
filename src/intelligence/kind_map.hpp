// From the kinds that universal-ctags reports to the symbol kinds (`type_code`) of the index.
//
// The index speaks one vocabulary across languages, so that the symbol list, completion and jump
// to definition can treat kinds alike whatever parser found them. ctags kinds map as follows
// (the long kind names, as `--output-format=json` prints them):
//
//   function, subroutine, procedure, func                      → function
//   method, member with a signature (Python), singletonMethod   → method
//   prototype                                                  → prototype
//   class, struct, union, enum, interface, trait, protocol,
//   namespace, module, package, macro, typedef                  → the same name (typedef → type)
//   enumerator                                                 → enum_constant
//   member, field (data members)                               → field
//   variable, externvar, var                                   → variable
//   constant, const                                            → constant
//   property                                                   → property
//   local, parameter                                           → local (hidden from the symbol list)
//   Objective-C: method in an @interface or @protocol          → method_interface
//                method in an @implementation                  → method_implementation
//                class method ("+") in either                  → class_method_interface / class_method_implementation
//                implementation                                → implementation
//                category                                      → category_implementation
//   anything else (headings, anchors, targets, keys...)        → misc
//
// A few kinds are kept out of some lists: "local" out of the symbol list; "misc" and the method
// implementations/interfaces out of completion; "misc", the interfaces and the implementations
// out of jump to definition.
#pragma once

#include <string>
#include <string_view>

namespace vx {

// The index's kind for a ctags kind. `language` is the ctags language name; `scopeKind` is the
// ctags kind of the enclosing symbol (it decides whether an Objective-C method is an interface or
// an implementation); `hasSignature` tells a Python method from a data member.
std::string VXTypeCodeForCtagsKind(std::string_view language, std::string_view kind, std::string_view scopeKind = {},
                                   bool hasSignature = false);

bool VXTypeCodeIsHiddenFromSymbolList(std::string_view typeCode);
bool VXTypeCodeIsHiddenFromCompletion(std::string_view typeCode);
bool VXTypeCodeIsHiddenFromJumpToDefinition(std::string_view typeCode);

}  // namespace vx

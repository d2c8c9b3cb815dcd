// Files that keep every rule, to be broken in one place.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "tests/support/builder.h"

namespace test {

/// An image, a graphic and a text with which nothing is wrong.
NitfBuilder SoundFile();
/// The same with another image.
NitfBuilder SoundWith(const ImageForm& form, const std::string& data);

/// A file made to break a rule.
struct Broken {
  std::string rule;
  std::function<std::string()> file;
};
/// A sound file changed by `change`.
Broken Change(const std::string& rule, const std::function<void(NitfBuilder&)>& change);
/// One whose image is changed.
Broken ChangeImage(const std::string& rule, const std::string& field, const std::string& text);
/// One whose image is another.
Broken Other(const std::string& rule, const ImageForm& form, const std::function<std::string()>& data);

/// The rules that a file does not keep.
std::set<std::string> RulesBroken(const std::string& bytes, const std::string& profile = "");
/// The rules that were each broken by a file that breaks no other one, so far.
std::set<std::string>& RulesBrokenAlone();
/// Every file breaks its rule and no other one.
void ExpectBroken(const std::vector<Broken>& files);

}  // namespace test

#include "tests/support/sound.h"

#include <gtest/gtest.h>

#include "tests/support/metafile.h"
#include "tests/support/support.h"
#include "tools/orbntf/inspect/verdict.h"

namespace test {

NitfBuilder SoundWith(const ImageForm& form, const std::string& data) {
  NitfBuilder file;
  file.Image(form, data).Graphic(GraphicRecord(), Metafile(Element(4, 1, I({1, 1, 9, 9}))));
  file.graphics[0].subheader.Set("SDLVL", 2).Set("SBND2", "0001000010");
  file.Text("A line\r\n");
  return file;
}

NitfBuilder SoundFile() { return SoundWith({}, std::string(64, 'p')); }

Broken Change(const std::string& rule, const std::function<void(NitfBuilder&)>& change) {
  return {rule, [change] {
            NitfBuilder file = SoundFile();
            change(file);
            return file.Bytes();
          }};
}

Broken ChangeImage(const std::string& rule, const std::string& field, const std::string& text) {
  return Change(rule, [=](NitfBuilder& file) { file.images[0].subheader.Set(field, text); });
}

Broken Other(const std::string& rule, const ImageForm& form, const std::function<std::string()>& data) {
  return {rule, [=] { return SoundWith(form, data()).Bytes(); }};
}

std::set<std::string> RulesBroken(const std::string& bytes, const std::string& profile) {
  const TempFile file(bytes);
  const core::Survey survey(file.Path());
  const core::RecordDefinitions definitions;
  std::set<std::string> rules;
  std::vector<core::Finding> findings;
  (void)core::FindFaults(survey, definitions, {}, findings, profile);
  for (const core::Finding& finding : findings) {
    rules.insert(finding.rule->id);
    EXPECT_LE(finding.offset, bytes.size()) << core::Describe(finding);
    EXPECT_FALSE(finding.words.empty());
  }
  if (rules.size() == 1) RulesBrokenAlone().insert(*rules.begin());
  return rules;
}

std::set<std::string>& RulesBrokenAlone() {
  static std::set<std::string> rules;
  return rules;
}

void ExpectBroken(const std::vector<Broken>& files) {
  for (const Broken& broken : files)
    EXPECT_EQ(RulesBroken(broken.file()), std::set<std::string>{broken.rule}) << broken.rule;
}

}  // namespace test

#include "setup/Engines.h"

#include "speech/Languages.h"
#include "speech/OpenAiEngine.h"
#include "speech/PocketsphinxEngine.h"

namespace vemo::service {

EngineKind engineOf(const Configuration& configuration) {
  if (configuration.engine == Configuration::EngineName::OpenAi)
    return {.name = "openai",
            .output = EngineKind::Output::Punctuated,
            .make = [settings =
                         configuration.openAi] { return std::make_unique<OpenAiEngine>(settings); },
            .languages = manyLanguages};
  return {.name = "pocketsphinx",
          .output = EngineKind::Output::BareWords,
          .make =
              [model = configuration.pocketsphinx] {
                return std::make_unique<PocketsphinxEngine>(model);
              },
          .languages = englishOnly};
}

}  // namespace vemo::service

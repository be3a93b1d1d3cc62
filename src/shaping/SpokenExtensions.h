// File name extensions as people say them and as speech models hear them.
//
// A spoken form that is the extension itself is a row, too: the rows are also the words that may
// end a spoken file name. "yml" is written "yaml" on purpose.
#pragma once

#include <QStringView>

namespace vemo {

struct SpokenExtension {
  QStringView spoken;
  QStringView extension;
};

inline constexpr SpokenExtension spokenExtensions[] = {
    {u"shift", u"swift"},   {u"swif", u"swift"},    {u"swiff", u"swift"},
    {u"sweep", u"swift"},   {u"swift", u"swift"},   {u"ts", u"ts"},
    {u"typescript", u"ts"}, {u"tee ess", u"ts"},    {u"t.s", u"ts"},
    {u"js", u"js"},         {u"javascript", u"js"}, {u"jay ess", u"js"},
    {u"j.s", u"js"},        {u"tsx", u"tsx"},       {u"jsx", u"jsx"},
    {u"py", u"py"},         {u"pie", u"py"},        {u"pi", u"py"},
    {u"python", u"py"},     {u"json", u"json"},     {u"jason", u"json"},
    {u"j son", u"json"},    {u"md", u"md"},         {u"markdown", u"md"},
    {u"html", u"html"},     {u"css", u"css"},       {u"scss", u"scss"},
    {u"rs", u"rs"},         {u"rust", u"rs"},       {u"go", u"go"},
    {u"kt", u"kt"},         {u"kotlin", u"kt"},     {u"java", u"java"},
    {u"c", u"c"},           {u"cpp", u"cpp"},       {u"h", u"h"},
    {u"m", u"m"},           {u"sh", u"sh"},         {u"yaml", u"yaml"},
    {u"yml", u"yaml"},      {u"yamel", u"yaml"},    {u"toml", u"toml"},
    {u"sql", u"sql"},       {u"sequel", u"sql"},    {u"graphql", u"graphql"},
    {u"env", u"env"},       {u"vue", u"vue"},       {u"svelte", u"svelte"},
};

}  // namespace vemo

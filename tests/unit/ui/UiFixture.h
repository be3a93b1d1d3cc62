// Fonts to draw with, and no screen.
#pragma once

#include <gtest/gtest.h>

#include <QGuiApplication>

#include "fakes/TestApplication.h"

namespace vemo {

class UiFixture : public testing::Test, protected TestApplication<QGuiApplication> {};

}  // namespace vemo

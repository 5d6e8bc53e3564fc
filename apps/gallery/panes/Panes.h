#pragma once

#include "gallery/Gallery.h"
#include "gallery/kit/Card.h"
#include "gallery/kit/Controls.h"

// What developers, designers, translators and testers look at beside the phone.
namespace torvel::gallery {

QWidget* makeThemePane();
QWidget* makeTypePane(Gallery& gallery);
QWidget* makeFontsPane(Gallery& gallery);
QWidget* makeImagesPane(Gallery& gallery);
QWidget* makeAmountsPane(Gallery& gallery);
QWidget* makeRouterPane(Gallery& gallery);
QWidget* makeNetworkPane(Gallery& gallery);
QWidget* makeStorePane(Gallery& gallery);
QWidget* makeLogPane(Gallery& gallery);

}  // namespace torvel::gallery

// SPDX-License-Identifier: MIT
#include "input/panel_input.h"

#include "cards/card_panel.h"
#include "input/panel_controls.h"
#include "midi/midi_glide.h"
#include "midi/midi_learn.h"
#include "panel/control_geometry.h"
#include "panel/layout_scale.h"
#include "panel/panel_state.h"
#include "sequencer/sequencer.h"

namespace percussomatic {

namespace {

InputResult changeLayoutScale(double delta) {
    const double scale = steppedLayoutScale(layoutScale(), delta);
    if (scale == layoutScale()) {
        return {};
    }
    layoutScale() = scale;
    writeLayoutScale(kLayoutScaleFile, scale);
    return {.request = Request::resizeWindow};
}

// Carries out a click on the strip or in the card dialog.
InputResult perform(PanelCommand command, Size client) {
    switch (command) {
    case PanelCommand::cards:
        toggleCardsDialog();
        break;
    case PanelCommand::previousCard:
        showPreviousCard();
        break;
    case PanelCommand::nextCard:
        showNextCard();
        break;
    case PanelCommand::title:
        return {.request = Request::askTitle};
    case PanelCommand::save:
        saveCard();
        break;
    case PanelCommand::load:
        beginCardInsertion(client);
        break;
    case PanelCommand::cancel:
        closeCardsDialog();
        break;
    case PanelCommand::midi:
        return {.request = Request::showMidi};
    case PanelCommand::info:
        return {.request = Request::showInfo};
    case PanelCommand::tempo:
        return {.request =
                    sequencer().externalSync ? Request::explainExternalTempo : Request::askTempo};
    case PanelCommand::effects:
        return {.request = Request::showEffects};
    case PanelCommand::none:
    case PanelCommand::swallowed:
        break;
    }
    return {};
}

} // namespace

InputResult pressPanel(PixelPoint point, Size client) {
    const PanelCommand command = panelCommandAt(point, cardPanelRects(client));
    if (command != PanelCommand::none) {
        return perform(command, client);
    }
    const double scale = viewScale(client);
    if (learnClick(point, scale)) {
        return {};
    }
    switch (pressControl(point, scale)) {
    case Press::handled:
        return {};
    case Press::held:
        break;
    case Press::none:
        panelState().windowDragging = true;
        panelState().windowDragAnchorX = point.x;
        panelState().windowDragAnchorY = point.y;
        break;
    }
    return {.request = Request::captureMouse};
}

InputResult movePointer(PixelPoint point, Size client, bool fine) {
    const PanelState& panel = panelState();
    if (dragControl(point, viewScale(client), fine) || !panel.windowDragging) {
        return {};
    }
    return {.request = Request::moveWindow,
            .distance = {point.x - panel.windowDragAnchorX, point.y - panel.windowDragAnchorY}};
}

InputResult releasePointer() {
    releaseControls();
    panelState().windowDragging = false;
    return {.request = Request::releaseMouse};
}

InputResult turnWheelAt(PixelPoint point, Size client, const WheelTurn& turn) {
    if (turn.control) {
        hideInsertedCard();
        return changeLayoutScale(turn.delta > 0 ? kLayoutScaleStep : -kLayoutScaleStep);
    }
    return turnWheel(point, viewScale(client), turn.delta, turn.shift)
               ? InputResult{}
               : InputResult{.request = Request::defaultHandling};
}

InputResult pressKey(Key key, bool control) {
    if (key == Key::escape) {
        if (!cardPanel().cardsDialogOpen) {
            return {.request = Request::closeWindow};
        }
        closeCardsDialog();
        return {};
    }
    if (control && key == Key::plus) {
        return changeLayoutScale(kLayoutScaleStep);
    }
    if (control && key == Key::minus) {
        return changeLayoutScale(-kLayoutScaleStep);
    }
    return {.request = Request::defaultHandling};
}

InputResult fireTimer(WindowTimer timer) {
    switch (timer) {
    case WindowTimer::powerOff:
        stopTimer(WindowTimer::powerOff);
        return {.request = Request::closeWindow};
    case WindowTimer::cardInsertion:
        if (cardInsertionTick()) {
            cancelGlides(); // a pending glide would undo the card
        }
        return {};
    case WindowTimer::midiGlide:
        midiSmoothingTick();
        return {};
    }
    return {.request = Request::defaultHandling};
}

} // namespace percussomatic

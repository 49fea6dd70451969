// SPDX-License-Identifier: GPL-3.0-or-later
// The dialog for messages to the user. Loaded with the first message.
import QtQuick 2.15
import QtQuick.Dialogs 1.3

MessageDialog {
    standardButtons: StandardButton.Ok
}

// SPDX-License-Identifier: GPL-3.0-or-later
// The dialog for messages to the user. Loaded with the first message.
import QtQuick 2.15
import QtQuick.Dialogs 1.3

MessageDialog {
    // advice: what helps, in plain text.
    function show(message, messageIcon, advice) {
        text = message;
        // A file's name may look like HTML.
        informativeText = advice.replace(/&/g, "&amp;").replace(/</g, "&lt;").replace(/\n/g, "<br />");
        icon = messageIcon;
        open();
    }

    standardButtons: StandardButton.Ok
}

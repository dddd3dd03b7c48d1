<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>LayerOutlineCoordinator</name>
    <message>
        <source>Delete Layer Mask</source>
        <translation>Ebenenmaske löschen</translation>
    </message>
    <message>
        <source>Apply Layer Mask</source>
        <translation>Ebenenmaske anwenden</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>Umbenennen</translation>
    </message>
    <message>
        <source>Duplicate</source>
        <translation>Duplizieren</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Hide (Space)
Drag to hide several.</source>
        <translation>Ausblenden (Leertaste)
Ziehen, um mehrere auszublenden.</translation>
    </message>
    <message>
        <source>Show (Space)
Drag to show several.</source>
        <translation>Einblenden (Leertaste)
Ziehen, um mehrere einzublenden.</translation>
    </message>
    <message>
        <source>Unlock (Shift+Space)
Lets the tools change it again.</source>
        <translation>Sperre aufheben (Umschalt+Leertaste)
Die Werkzeuge können sie wieder ändern.</translation>
    </message>
    <message>
        <source>Lock (Shift+Space)
Protects it from the tools.</source>
        <translation>Sperren (Umschalt+Leertaste)
Schützt vor Änderungen durch die Werkzeuge.</translation>
    </message>
    <message>
        <source>Collapse (Left)</source>
        <translation>Zuklappen (Links)</translation>
    </message>
    <message>
        <source>Expand (Right)</source>
        <translation>Aufklappen (Rechts)</translation>
    </message>
    <message>
        <source>Pixels
Click to edit them. Ctrl-click to select what isn&apos;t transparent.</source>
        <translation>Pixel
Klicken, um sie zu bearbeiten. Mit Strg klicken, um auszuwählen, was nicht transparent ist.</translation>
    </message>
    <message>
        <source>Mask
Click to edit it. Ctrl-click to load it as the selection.</source>
        <translation>Maske
Klicken, um sie zu bearbeiten. Mit Strg klicken, um sie als Auswahl zu laden.</translation>
    </message>
    <message>
        <source>Linked (Ctrl+Shift+Space)
The mask moves along with the pixels.</source>
        <translation>Verknüpft (Strg+Umschalt+Leertaste)
Die Maske bewegt sich mit den Pixeln.</translation>
    </message>
    <message>
        <source>Unlinked (Ctrl+Shift+Space)
The mask and the pixels move on their own.</source>
        <translation>Nicht verknüpft (Strg+Umschalt+Leertaste)
Maske und Pixel bewegen sich unabhängig voneinander.</translation>
    </message>
</context>
<context>
    <name>canvas</name>
    <message>
        <source>Canvas</source>
        <translation>Arbeitsfläche</translation>
    </message>
</context>
<context>
    <name>gestures</name>
    <message>
        <source>Wheel</source>
        <translation>Mausrad</translation>
    </message>
    <message>
        <source>Scroll</source>
        <translation>Scrollen</translation>
    </message>
    <message>
        <source>Shift+Wheel</source>
        <translation>Umschalt+Mausrad</translation>
    </message>
    <message>
        <source>Scroll sideways</source>
        <translation>Seitwärts scrollen</translation>
    </message>
    <message>
        <source>Alt+Wheel or Ctrl+Wheel</source>
        <translation>Alt+Mausrad oder Strg+Mausrad</translation>
    </message>
    <message>
        <source>Zoom about the pointer</source>
        <translation>Um den Mauszeiger zoomen</translation>
    </message>
    <message>
        <source>Middle button</source>
        <translation>Mittlere Maustaste</translation>
    </message>
    <message>
        <source>Pan while it is held</source>
        <translation>Ansicht verschieben, solange sie gedrückt ist</translation>
    </message>
    <message>
        <source>Space</source>
        <translation>Leertaste</translation>
    </message>
    <message>
        <source>Hand tool while it is held</source>
        <translation>Hand-Werkzeug, solange sie gedrückt ist</translation>
    </message>
    <message>
        <source>Ctrl+Tab</source>
        <translation>Strg+Tab</translation>
    </message>
    <message>
        <source>The document used before</source>
        <translation>Das zuvor benutzte Dokument</translation>
    </message>
    <message>
        <source>Ctrl+Shift+Tab</source>
        <translation>Strg+Umschalt+Tab</translation>
    </message>
    <message>
        <source>The document used longest ago</source>
        <translation>Das am längsten nicht benutzte Dokument</translation>
    </message>
    <message>
        <source>Shift</source>
        <translation>Umschalt</translation>
    </message>
    <message>
        <source>Add to the selection</source>
        <translation>Der Auswahl hinzufügen</translation>
    </message>
    <message>
        <source>Alt</source>
        <translation>Alt</translation>
    </message>
    <message>
        <source>Subtract from the selection</source>
        <translation>Von der Auswahl abziehen</translation>
    </message>
    <message>
        <source>Shift+Alt</source>
        <translation>Umschalt+Alt</translation>
    </message>
    <message>
        <source>Intersect with the selection</source>
        <translation>Schnittmenge mit der Auswahl bilden</translation>
    </message>
    <message>
        <source>Ctrl</source>
        <translation>Strg</translation>
    </message>
    <message>
        <source>Square or circle while drawing</source>
        <translation>Quadrat oder Kreis beim Aufziehen</translation>
    </message>
    <message>
        <source>Move the shape while drawing</source>
        <translation>Form beim Aufziehen verschieben</translation>
    </message>
    <message>
        <source>Drag inside</source>
        <translation>Innen ziehen</translation>
    </message>
    <message>
        <source>Move the selection</source>
        <translation>Auswahl verschieben</translation>
    </message>
    <message>
        <source>Double-click</source>
        <translation>Doppelklick</translation>
    </message>
    <message>
        <source>Close a polygon</source>
        <translation>Polygon schließen</translation>
    </message>
    <message>
        <source>Backspace</source>
        <translation>Rücktaste</translation>
    </message>
    <message>
        <source>Take back a polygon&apos;s last corner</source>
        <translation>Letzte Ecke eines Polygons zurücknehmen</translation>
    </message>
    <message>
        <source>Shift at a handle</source>
        <translation>Umschalt an einem Griff</translation>
    </message>
    <message>
        <source>Scale without keeping the proportions</source>
        <translation>Ohne feste Proportionen skalieren</translation>
    </message>
    <message>
        <source>Shift while turning</source>
        <translation>Umschalt beim Drehen</translation>
    </message>
    <message>
        <source>Turn in steps</source>
        <translation>In Schritten drehen</translation>
    </message>
    <message>
        <source>Arrow keys</source>
        <translation>Pfeiltasten</translation>
    </message>
    <message>
        <source>Move by a pixel (Move tool)</source>
        <translation>Um ein Pixel verschieben (Verschieben-Werkzeug)</translation>
    </message>
    <message>
        <source>Shift+Arrow keys</source>
        <translation>Umschalt+Pfeiltasten</translation>
    </message>
    <message>
        <source>Move by ten pixels (Move tool)</source>
        <translation>Um zehn Pixel verschieben (Verschieben-Werkzeug)</translation>
    </message>
    <message>
        <source>Alt (Eyedropper)</source>
        <translation>Alt (Pipette)</translation>
    </message>
    <message>
        <source>Pick the background color</source>
        <translation>Hintergrundfarbe aufnehmen</translation>
    </message>
    <message>
        <source>Alt (Zoom)</source>
        <translation>Alt (Zoom)</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>Verkleinern</translation>
    </message>
    <message>
        <source>Drag (Zoom)</source>
        <translation>Ziehen (Zoom)</translation>
    </message>
    <message>
        <source>Show a part, or zoom by dragging</source>
        <translation>Ausschnitt zeigen oder durch Ziehen zoomen</translation>
    </message>
    <message>
        <source>Canvas</source>
        <translation>Arbeitsfläche</translation>
    </message>
    <message>
        <source>Selection tools</source>
        <translation>Auswahlwerkzeuge</translation>
    </message>
    <message>
        <source>Move and Free Transform</source>
        <translation>Verschieben und freies Transformieren</translation>
    </message>
    <message>
        <source>Eyedropper and Zoom</source>
        <translation>Pipette und Zoom</translation>
    </message>
    <message>
        <source>F6</source>
        <translation>F6</translation>
    </message>
    <message>
        <source>Next area of the window</source>
        <translation>Nächster Bereich des Fensters</translation>
    </message>
    <message>
        <source>Ctrl+F6</source>
        <translation>Strg+F6</translation>
    </message>
    <message>
        <source>Next control</source>
        <translation>Nächstes Bedienelement</translation>
    </message>
    <message>
        <source>Ctrl+Shift+F6</source>
        <translation>Strg+Umschalt+F6</translation>
    </message>
    <message>
        <source>Previous control</source>
        <translation>Vorheriges Bedienelement</translation>
    </message>
    <message>
        <source>Keyboard focus</source>
        <translation>Tastaturfokus</translation>
    </message>
    <message>
        <source>Esc or Ctrl+W (Opening)</source>
        <translation>Esc oder Strg+W (beim Öffnen)</translation>
    </message>
    <message>
        <source>Stop opening the file that is shown</source>
        <translation>Das Öffnen der gezeigten Datei abbrechen</translation>
    </message>
    <message>
        <source>F2 or Return (Layers)</source>
        <translation>F2 oder Enter (Ebenen)</translation>
    </message>
    <message>
        <source>Rename a layer or folder</source>
        <translation>Eine Ebene oder einen Ordner umbenennen</translation>
    </message>
    <message>
        <source>Show or hide a layer, folder or channel</source>
        <translation>Eine Ebene, einen Ordner oder einen Kanal ein- oder ausblenden</translation>
    </message>
    <message>
        <source>Drag over eyes</source>
        <translation>Über Augen ziehen</translation>
    </message>
    <message>
        <source>Show or hide several in one go</source>
        <translation>Mehrere auf einmal ein- oder ausblenden</translation>
    </message>
    <message>
        <source>Shift+Space (Layers)</source>
        <translation>Umschalt+Leertaste (Ebenen)</translation>
    </message>
    <message>
        <source>Lock or unlock a layer or folder</source>
        <translation>Eine Ebene oder einen Ordner sperren oder entsperren</translation>
    </message>
    <message>
        <source>Ctrl+Shift+Space (Layers)</source>
        <translation>Strg+Umschalt+Leertaste (Ebenen)</translation>
    </message>
    <message>
        <source>Link a mask to its layer, or unlink it</source>
        <translation>Eine Maske mit ihrer Ebene verknüpfen oder von ihr lösen</translation>
    </message>
    <message>
        <source>Ctrl+Click on a thumbnail</source>
        <translation>Strg+Klick auf ein Vorschaubild</translation>
    </message>
    <message>
        <source>Select what a layer, mask or channel holds</source>
        <translation>Auswählen, was Ebene, Maske oder Kanal enthält</translation>
    </message>
    <message>
        <source>Return (Channels)</source>
        <translation>Enter (Kanäle)</translation>
    </message>
    <message>
        <source>Show a channel alone</source>
        <translation>Einen Kanal allein zeigen</translation>
    </message>
    <message>
        <source>Ctrl+Return (Channels)</source>
        <translation>Strg+Enter (Kanäle)</translation>
    </message>
    <message>
        <source>Select what a channel holds</source>
        <translation>Auswählen, was ein Kanal enthält</translation>
    </message>
    <message>
        <source>Hold, Alt+Click or Alt+Down (Tools)</source>
        <translation>Halten, Alt+Klick oder Alt+Unten (Werkzeuge)</translation>
    </message>
    <message>
        <source>Show all tools of a group</source>
        <translation>Alle Werkzeuge einer Gruppe zeigen</translation>
    </message>
    <message>
        <source>Up or Down</source>
        <translation>Oben oder Unten</translation>
    </message>
    <message>
        <source>Change a value by a small step</source>
        <translation>Einen Wert um einen kleinen Schritt ändern</translation>
    </message>
    <message>
        <source>Shift+Up or Shift+Down</source>
        <translation>Umschalt+Oben oder Umschalt+Unten</translation>
    </message>
    <message>
        <source>Change a value by a large step</source>
        <translation>Einen Wert um einen großen Schritt ändern</translation>
    </message>
    <message>
        <source>Alt+Down (value)</source>
        <translation>Alt+Unten (Wert)</translation>
    </message>
    <message>
        <source>Open the slider of a value</source>
        <translation>Den Regler eines Werts öffnen</translation>
    </message>
    <message>
        <source>Panels</source>
        <translation>Bedienfelder</translation>
    </message>
</context>
<context>
    <name>keys</name>
    <message>
        <source>Next tab</source>
        <translation>Nächster Tab</translation>
    </message>
    <message>
        <source>Previous tab</source>
        <translation>Vorheriger Tab</translation>
    </message>
    <message>
        <source>Fill with the foreground color</source>
        <translation>Mit der Vordergrundfarbe füllen</translation>
    </message>
    <message>
        <source>Fill with the background color</source>
        <translation>Mit der Hintergrundfarbe füllen</translation>
    </message>
    <message>
        <source>Cancel a free transform</source>
        <translation>Freies Transformieren abbrechen</translation>
    </message>
    <message>
        <source>Apply a free transform</source>
        <translation>Freies Transformieren anwenden</translation>
    </message>
    <message>
        <source>Deselect</source>
        <translation>Auswahl aufheben</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Rectangle or ellipse selection</source>
        <translation>Rechteck- oder Ellipsenauswahl</translation>
    </message>
    <message>
        <source>Swap the foreground and background colors</source>
        <translation>Vorder- und Hintergrundfarbe tauschen</translation>
    </message>
    <message>
        <source>Foreground black, background white</source>
        <translation>Vordergrund schwarz, Hintergrund weiß</translation>
    </message>
    <message>
        <source> or </source>
        <translation> oder </translation>
    </message>
</context>
<context>
    <name>names</name>
    <message>
        <source>Grayscale 8-bit</source>
        <translation>Graustufen, 8 Bit</translation>
    </message>
    <message>
        <source>Grayscale 16-bit</source>
        <translation>Graustufen, 16 Bit</translation>
    </message>
    <message>
        <source>RGB 8-bit</source>
        <translation>RGB, 8 Bit</translation>
    </message>
    <message>
        <source>RGB 16-bit</source>
        <translation>RGB, 16 Bit</translation>
    </message>
    <message>
        <source>Normal</source>
        <translation>Normal</translation>
    </message>
    <message>
        <source>Multiply</source>
        <translation>Multiplizieren</translation>
    </message>
    <message>
        <source>Screen</source>
        <translation>Negativ multiplizieren</translation>
    </message>
    <message>
        <source>Overlay</source>
        <translation>Überlagern</translation>
    </message>
    <message>
        <source>Darken</source>
        <translation>Abdunkeln</translation>
    </message>
    <message>
        <source>Lighten</source>
        <translation>Aufhellen</translation>
    </message>
    <message>
        <source>Difference</source>
        <translation>Differenz</translation>
    </message>
    <message>
        <source>Exclusion</source>
        <translation>Ausschluss</translation>
    </message>
    <message>
        <source>Hand</source>
        <translation>Hand</translation>
    </message>
    <message>
        <source>Move</source>
        <translation>Verschieben</translation>
    </message>
    <message>
        <source>Rectangle Select</source>
        <translation>Rechteckauswahl</translation>
    </message>
    <message>
        <source>Ellipse Select</source>
        <translation>Ellipsenauswahl</translation>
    </message>
    <message>
        <source>Lasso Select</source>
        <translation>Lasso</translation>
    </message>
    <message>
        <source>Polygonal Lasso Select</source>
        <translation>Polygon-Lasso</translation>
    </message>
    <message>
        <source>Magic Wand</source>
        <translation>Zauberstab</translation>
    </message>
    <message>
        <source>Brush</source>
        <translation>Pinsel</translation>
    </message>
    <message>
        <source>Eraser</source>
        <translation>Radiergummi</translation>
    </message>
    <message>
        <source>Eyedropper</source>
        <translation>Pipette</translation>
    </message>
    <message>
        <source>Zoom</source>
        <translation>Zoom</translation>
    </message>
    <message>
        <source>Free Transform</source>
        <translation>Frei transformieren</translation>
    </message>
    <message>
        <source>Untitled</source>
        <translation>Unbenannt</translation>
    </message>
    <message>
        <source>Background</source>
        <translation>Hintergrund</translation>
    </message>
    <message>
        <source>Pasted Layer</source>
        <translation>Eingefügte Ebene</translation>
    </message>
    <message>
        <source>Add Folder</source>
        <translation>Ordner hinzufügen</translation>
    </message>
    <message>
        <source>Add Layer</source>
        <translation>Ebene hinzufügen</translation>
    </message>
    <message>
        <source>Add Layer Mask</source>
        <translation>Ebenenmaske hinzufügen</translation>
    </message>
    <message>
        <source>Apply Layer Mask</source>
        <translation>Ebenenmaske anwenden</translation>
    </message>
    <message>
        <source>Blend Mode</source>
        <translation>Mischmodus</translation>
    </message>
    <message>
        <source>Canvas Size</source>
        <translation>Arbeitsfläche ändern</translation>
    </message>
    <message>
        <source>Change Color Mode</source>
        <translation>Farbmodus ändern</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Crop</source>
        <translation>Zuschneiden</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Delete Folder</source>
        <translation>Ordner löschen</translation>
    </message>
    <message>
        <source>Delete Layer</source>
        <translation>Ebene löschen</translation>
    </message>
    <message>
        <source>Deselect</source>
        <translation>Auswahl aufheben</translation>
    </message>
    <message>
        <source>Duplicate</source>
        <translation>Duplizieren</translation>
    </message>
    <message>
        <source>Duplicate Folder</source>
        <translation>Ordner duplizieren</translation>
    </message>
    <message>
        <source>Duplicate Layer</source>
        <translation>Ebene duplizieren</translation>
    </message>
    <message>
        <source>Fill</source>
        <translation>Füllen</translation>
    </message>
    <message>
        <source>Image Size</source>
        <translation>Bildgröße</translation>
    </message>
    <message>
        <source>Invert</source>
        <translation>Invertieren</translation>
    </message>
    <message>
        <source>Invert Selection</source>
        <translation>Auswahl umkehren</translation>
    </message>
    <message>
        <source>Levels</source>
        <translation>Tonwertkorrektur</translation>
    </message>
    <message>
        <source>Lock</source>
        <translation>Sperren</translation>
    </message>
    <message>
        <source>Move Layer</source>
        <translation>Ebene verschieben</translation>
    </message>
    <message>
        <source>Move Selection</source>
        <translation>Auswahl verschieben</translation>
    </message>
    <message>
        <source>Opacity</source>
        <translation>Deckkraft</translation>
    </message>
    <message>
        <source>Remove Layer Mask</source>
        <translation>Ebenenmaske entfernen</translation>
    </message>
    <message>
        <source>Rename</source>
        <translation>Umbenennen</translation>
    </message>
    <message>
        <source>Rotate</source>
        <translation>Drehen</translation>
    </message>
    <message>
        <source>Scale</source>
        <translation>Skalieren</translation>
    </message>
    <message>
        <source>Select All</source>
        <translation>Alles auswählen</translation>
    </message>
    <message>
        <source>Select Channel</source>
        <translation>Kanal auswählen</translation>
    </message>
    <message>
        <source>Select Layer Transparency</source>
        <translation>Ebenentransparenz auswählen</translation>
    </message>
    <message>
        <source>Select Mask</source>
        <translation>Maske auswählen</translation>
    </message>
    <message>
        <source>Trim</source>
        <translation>Ränder entfernen</translation>
    </message>
    <message>
        <source>Visibility</source>
        <translation>Sichtbarkeit</translation>
    </message>
</context>
<context>
    <name>orvanel::AboutCommand</name>
    <message>
        <source>About Orvanel</source>
        <translation>Über Orvanel</translation>
    </message>
</context>
<context>
    <name>orvanel::AboutView</name>
    <message>
        <source>About Orvanel</source>
        <translation>Über Orvanel</translation>
    </message>
    <message>
        <source>Version 0.1</source>
        <translation>Version 0.1</translation>
    </message>
    <message>
        <source>A layered image editor by Fennimoor</source>
        <translation>Ein Bildeditor mit Ebenen von Fennimoor</translation>
    </message>
</context>
<context>
    <name>orvanel::BrushOptions</name>
    <message>
        <source>Size:</source>
        <translation>Größe:</translation>
    </message>
    <message>
        <source>Diameter of the brush&apos;s tip, in pixels</source>
        <translation>Durchmesser der Pinselspitze in Pixeln</translation>
    </message>
    <message>
        <source>Hardness:</source>
        <translation>Härte:</translation>
    </message>
    <message>
        <source>How much of the tip is solid before its edge fades</source>
        <translation>Wie viel der Spitze deckt, bevor ihr Rand ausläuft</translation>
    </message>
    <message>
        <source>Flow:</source>
        <translation>Fluss:</translation>
    </message>
    <message>
        <source>How much color the brush lays down at each point</source>
        <translation>Wie viel Farbe der Pinsel an jeder Stelle aufträgt</translation>
    </message>
</context>
<context>
    <name>orvanel::CancelButton</name>
    <message>
        <source>Cancel reading and writing files</source>
        <translation>Lesen und Schreiben von Dateien abbrechen</translation>
    </message>
</context>
<context>
    <name>orvanel::CanvasContainerView</name>
    <message>
        <source>canvas</source>
        <translation>Arbeitsfläche</translation>
    </message>
</context>
<context>
    <name>orvanel::CanvasSizeDialog</name>
    <message>
        <source>Top left</source>
        <translation>Oben links</translation>
    </message>
    <message>
        <source>Top</source>
        <translation>Oben</translation>
    </message>
    <message>
        <source>Top right</source>
        <translation>Oben rechts</translation>
    </message>
    <message>
        <source>Left</source>
        <translation>Links</translation>
    </message>
    <message>
        <source>Center</source>
        <translation>Mitte</translation>
    </message>
    <message>
        <source>Right</source>
        <translation>Rechts</translation>
    </message>
    <message>
        <source>Bottom left</source>
        <translation>Unten links</translation>
    </message>
    <message>
        <source>Bottom</source>
        <translation>Unten</translation>
    </message>
    <message>
        <source>Bottom right</source>
        <translation>Unten rechts</translation>
    </message>
    <message>
        <source>Canvas Size</source>
        <translation>Arbeitsfläche ändern</translation>
    </message>
    <message>
        <source>Enter the new canvas dimensions.</source>
        <translation>Neue Maße der Arbeitsfläche eingeben.</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Relative</source>
        <translation>Relativ</translation>
    </message>
    <message>
        <source>Current Size</source>
        <translation>Aktuelle Größe</translation>
    </message>
    <message>
        <source>%1 × %2 px</source>
        <translation>%1 × %2 px</translation>
    </message>
    <message>
        <source>New Size:</source>
        <translation>Neue Größe:</translation>
    </message>
    <message>
        <source>Enter what is added to the current size instead of the new size</source>
        <translation>Statt der neuen Größe eingeben, was zur aktuellen hinzukommt</translation>
    </message>
    <message>
        <source>Anchor:</source>
        <translation>Anker:</translation>
    </message>
</context>
<context>
    <name>orvanel::ChannelListView</name>
    <message>
        <source>Channels</source>
        <translation>Kanäle</translation>
    </message>
    <message>
        <source>Hide (Space)
Drag to hide several.</source>
        <translation>Ausblenden (Leertaste)
Ziehen, um mehrere auszublenden.</translation>
    </message>
    <message>
        <source>Show (Space)
Drag to show several.</source>
        <translation>Einblenden (Leertaste)
Ziehen, um mehrere einzublenden.</translation>
    </message>
    <message>
        <source>Ctrl-click to load the channel as the selection (Ctrl+Return).</source>
        <translation>Mit Strg klicken, um den Kanal als Auswahl zu laden (Strg+Return).</translation>
    </message>
    <message>
        <source>Click to show this channel alone (Return).</source>
        <translation>Klicken, um nur diesen Kanal zu zeigen (Return).</translation>
    </message>
</context>
<context>
    <name>orvanel::ChannelTableModel</name>
    <message>
        <source>White</source>
        <translation>Weiß</translation>
    </message>
    <message>
        <source>RGB</source>
        <translation>RGB</translation>
    </message>
    <message>
        <source>Red</source>
        <translation>Rot</translation>
    </message>
    <message>
        <source>Green</source>
        <translation>Grün</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Blau</translation>
    </message>
    <message>
        <source>%1, visible</source>
        <translation>%1, sichtbar</translation>
    </message>
    <message>
        <source>%1, hidden</source>
        <translation>%1, ausgeblendet</translation>
    </message>
</context>
<context>
    <name>orvanel::CloseCommand</name>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
</context>
<context>
    <name>orvanel::ColorPickerContentView</name>
    <message>
        <source>New</source>
        <translation>Neu</translation>
    </message>
    <message>
        <source>Current</source>
        <translation>Aktuell</translation>
    </message>
    <message>
        <source>H</source>
        <translation>H</translation>
    </message>
    <message>
        <source>Hue</source>
        <translation>Farbton</translation>
    </message>
    <message>
        <source>S</source>
        <translation>S</translation>
    </message>
    <message>
        <source>Saturation</source>
        <translation>Sättigung</translation>
    </message>
    <message>
        <source>B</source>
        <translation>B</translation>
    </message>
    <message>
        <source>Brightness</source>
        <translation>Helligkeit</translation>
    </message>
    <message>
        <source>R</source>
        <translation>R</translation>
    </message>
    <message>
        <source>Red</source>
        <translation>Rot</translation>
    </message>
    <message>
        <source>G</source>
        <translation>G</translation>
    </message>
    <message>
        <source>Green</source>
        <translation>Grün</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Blau</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>orvanel::ColorPickerWindow</name>
    <message>
        <source>Color Picker</source>
        <translation>Farbwähler</translation>
    </message>
</context>
<context>
    <name>orvanel::ColorPreview</name>
    <message>
        <source>New and current color</source>
        <translation>Neue und aktuelle Farbe</translation>
    </message>
    <message>
        <source>New: %1, current: %2</source>
        <translation>Neu: %1, aktuell: %2</translation>
    </message>
</context>
<context>
    <name>orvanel::ColorSwatch</name>
    <message>
        <source>%1: #%2</source>
        <translation>%1: #%2</translation>
    </message>
    <message>
        <source>%1: #%2
Click to choose another</source>
        <translation>%1: #%2
Klicken, um eine andere zu wählen</translation>
    </message>
</context>
<context>
    <name>orvanel::ColorSwatches</name>
    <message>
        <source>Swap Colors</source>
        <translation>Farben tauschen</translation>
    </message>
    <message>
        <source>Swap Colors (X)</source>
        <translation>Farben tauschen (X)</translation>
    </message>
    <message>
        <source>Reset Colors</source>
        <translation>Farben zurücksetzen</translation>
    </message>
    <message>
        <source>Reset Colors (D)</source>
        <translation>Farben zurücksetzen (D)</translation>
    </message>
    <message>
        <source>Background Color</source>
        <translation>Hintergrundfarbe</translation>
    </message>
    <message>
        <source>Foreground Color</source>
        <translation>Vordergrundfarbe</translation>
    </message>
</context>
<context>
    <name>orvanel::Dialogs</name>
    <message>
        <source>Not Enough Memory</source>
        <translation>Nicht genügend Speicher</translation>
    </message>
    <message>
        <source>Invalid Dimensions</source>
        <translation>Ungültige Maße</translation>
    </message>
    <message>
        <source>Width and height must be between 1 and 16384 pixels.</source>
        <translation>Breite und Höhe müssen zwischen 1 und 16384 Pixeln liegen.</translation>
    </message>
</context>
<context>
    <name>orvanel::DocumentFiles</name>
    <message>
        <source>There is not enough memory for this edit. This step was not carried out. Close other documents or programs and try again.</source>
        <translation>Für diese Änderung reicht der Speicher nicht aus. Dieser Schritt wurde nicht ausgeführt. Schließen Sie andere Dokumente oder Programme und versuchen Sie es erneut.</translation>
    </message>
    <message>
        <source>The document has gained layers, masks or folders that this format can&apos;t hold. Use Save As.</source>
        <translation>Das Dokument hat inzwischen Ebenen, Masken oder Ordner, die dieses Format nicht aufnehmen kann. Verwenden Sie „Speichern unter“.</translation>
    </message>
    <message>
        <source>Failed to Save</source>
        <translation>Speichern fehlgeschlagen</translation>
    </message>
    <message>
        <source>The document stays open with all its changes.</source>
        <translation>Das Dokument bleibt mit allen Änderungen geöffnet.</translation>
    </message>
    <message>
        <source>Failed to Export</source>
        <translation>Exportieren fehlgeschlagen</translation>
    </message>
    <message>
        <source>The document itself is not affected.</source>
        <translation>Das Dokument selbst ist nicht betroffen.</translation>
    </message>
    <message>
        <source>Do you want to save changes to &quot;%1&quot;?</source>
        <translation>Möchten Sie die Änderungen an „%1“ speichern?</translation>
    </message>
    <message>
        <source>Its file is no longer where it was. The whole document will be lost if you don&apos;t save it.</source>
        <translation>Die Datei ist nicht mehr an ihrem Ort. Das ganze Dokument geht verloren, wenn Sie es nicht speichern.</translation>
    </message>
    <message>
        <source>Your changes will be lost if you don&apos;t save them.</source>
        <translation>Ihre Änderungen gehen verloren, wenn Sie sie nicht speichern.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is no longer where it was.</source>
        <translation>„%1“ ist nicht mehr an seinem Ort.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; has been changed by another program.</source>
        <translation>„%1“ wurde von einem anderen Programm geändert.</translation>
    </message>
    <message>
        <source>The file is not the one that was opened or saved here. Saving anyway replaces what the other program has written. Nothing is lost so far: your document is still open with all its changes.</source>
        <translation>Die Datei ist nicht mehr die, die hier geöffnet oder gespeichert wurde. Wenn Sie trotzdem speichern, wird ersetzt, was das andere Programm geschrieben hat. Bisher ist nichts verloren: Ihr Dokument ist mit allen Änderungen noch geöffnet.</translation>
    </message>
    <message>
        <source>The file has been moved, renamed or deleted since it was opened or saved here. Nothing is lost: your document is still open with all its changes. Saving it anyway makes a new file there.</source>
        <translation>Die Datei wurde verschoben, umbenannt oder gelöscht, seit sie hier geöffnet oder gespeichert wurde. Nichts ist verloren: Ihr Dokument ist mit allen Änderungen noch geöffnet. Wenn Sie trotzdem speichern, entsteht dort eine neue Datei.</translation>
    </message>
    <message>
        <source>There is already a file &quot;%1&quot;.</source>
        <translation>Es gibt schon eine Datei „%1“.</translation>
    </message>
    <message>
        <source>The file is not one that was opened or saved here. Saving anyway replaces it. Nothing is lost so far: your document is still open with all its changes.</source>
        <translation>Die Datei wurde hier weder geöffnet noch gesichert. Trotzdem zu sichern ersetzt sie. Bisher ist nichts verloren: Ihr Dokument ist mit allen Änderungen noch geöffnet.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; holds another version of this document.</source>
        <translation>„%1“ enthält eine andere Fassung dieses Dokuments.</translation>
    </message>
    <message>
        <source>The file was saved from this document, and may be older or newer than what has been restored here. Saving anyway replaces it. Nothing is lost so far: your document is still open with all its changes.</source>
        <translation>Die Datei wurde aus diesem Dokument gesichert und kann älter oder neuer sein als das, was hier wiederhergestellt wurde. Trotzdem zu sichern ersetzt sie. Bisher ist nichts verloren: Ihr Dokument ist mit allen Änderungen noch geöffnet.</translation>
    </message>
</context>
<context>
    <name>orvanel::DocumentInfoSection</name>
    <message>
        <source>Document</source>
        <translation>Dokument</translation>
    </message>
    <message>
        <source>Size:</source>
        <translation>Größe:</translation>
    </message>
    <message>
        <source>Color Mode:</source>
        <translation>Farbmodus:</translation>
    </message>
    <message>
        <source>Source:</source>
        <translation>Quelle:</translation>
    </message>
    <message>
        <source>Layers:</source>
        <translation>Ebenen:</translation>
    </message>
    <message>
        <source>Zoom:</source>
        <translation>Zoom:</translation>
    </message>
</context>
<context>
    <name>orvanel::DocumentOpener</name>
    <message>
        <source>Opened Incompletely</source>
        <translation>Unvollständig geöffnet</translation>
    </message>
    <message>
        <source>Failed to Open Image</source>
        <translation>Bild konnte nicht geöffnet werden</translation>
    </message>
    <message>
        <source>Failed to Open</source>
        <translation>Öffnen fehlgeschlagen</translation>
    </message>
    <message numerus="yes">
        <source>Failed to Open %n Files</source>
        <translation>
            <numerusform>%n Datei konnte nicht geöffnet werden</numerusform>
            <numerusform>%n Dateien konnten nicht geöffnet werden</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>orvanel::DocumentRecovery</name>
    <message>
        <source>Failed to Restore</source>
        <translation>Wiederherstellen fehlgeschlagen</translation>
    </message>
    <message>
        <source>It will be offered again at the next start.</source>
        <translation>Es wird beim nächsten Start wieder angeboten.</translation>
    </message>
    <message>
        <source>Unsaved changes aren&apos;t kept for recovery: %1</source>
        <translation>Ungespeicherte Änderungen werden nicht für die Wiederherstellung bewahrt: %1</translation>
    </message>
    <message>
        <source>Restored in Part</source>
        <translation>Teilweise wiederhergestellt</translation>
    </message>
    <message>
        <source>Unsaved changes are kept for recovery again.</source>
        <translation>Ungespeicherte Änderungen werden wieder für die Wiederherstellung bewahrt.</translation>
    </message>
    <message>
        <source>Failed to Discard</source>
        <translation>Verwerfen fehlgeschlagen</translation>
    </message>
</context>
<context>
    <name>orvanel::DocumentTab</name>
    <message>
        <source>Close this document</source>
        <translation>Dieses Dokument schließen</translation>
    </message>
    <message>
        <source>%1, unsaved changes</source>
        <translation>%1, nicht gespeicherte Änderungen</translation>
    </message>
    <message>
        <source>Close %1</source>
        <translation>%1 schließen</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Close Others</source>
        <translation>Andere schließen</translation>
    </message>
    <message>
        <source>Close All</source>
        <translation>Alle schließen</translation>
    </message>
    <message>
        <source>Open Containing Folder</source>
        <translation>Übergeordneten Ordner öffnen</translation>
    </message>
</context>
<context>
    <name>orvanel::DocumentTabBar</name>
    <message>
        <source>Open documents</source>
        <translation>Geöffnete Dokumente</translation>
    </message>
    <message>
        <source>New document</source>
        <translation>Neues Dokument</translation>
    </message>
    <message>
        <source>New document with the size and color mode of the active one</source>
        <translation>Neues Dokument mit Größe und Farbmodus des aktiven</translation>
    </message>
    <message>
        <source>Scroll tabs left</source>
        <translation>Tabs nach links scrollen</translation>
    </message>
    <message>
        <source>Scroll tabs right</source>
        <translation>Tabs nach rechts scrollen</translation>
    </message>
    <message>
        <source>List all documents</source>
        <translation>Alle Dokumente auflisten</translation>
    </message>
</context>
<context>
    <name>orvanel::EditMenuCommands</name>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Undo %1</source>
        <translation>Rückgängig: %1</translation>
    </message>
    <message>
        <source>Redo</source>
        <translation>Wiederholen</translation>
    </message>
    <message>
        <source>Redo %1</source>
        <translation>Wiederholen: %1</translation>
    </message>
    <message>
        <source>Cut</source>
        <translation>Ausschneiden</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Einfügen</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Free Transform</source>
        <translation>Frei transformieren</translation>
    </message>
</context>
<context>
    <name>orvanel::EraserOptions</name>
    <message>
        <source>Size:</source>
        <translation>Größe:</translation>
    </message>
    <message>
        <source>Diameter of the eraser&apos;s tip, in pixels</source>
        <translation>Durchmesser der Spitze des Radiergummis in Pixeln</translation>
    </message>
    <message>
        <source>Hardness:</source>
        <translation>Härte:</translation>
    </message>
    <message>
        <source>How much of the tip is solid before its edge fades</source>
        <translation>Wie viel der Spitze deckt, bevor ihr Rand ausläuft</translation>
    </message>
</context>
<context>
    <name>orvanel::ExportImageCommand</name>
    <message>
        <source>Export Image...</source>
        <translation>Bild exportieren …</translation>
    </message>
</context>
<context>
    <name>orvanel::HexField</name>
    <message>
        <source>Hexadecimal color</source>
        <translation>Hexadezimale Farbe</translation>
    </message>
    <message>
        <source>Six hexadecimal digits: red, green and blue</source>
        <translation>Sechs hexadezimale Ziffern: Rot, Grün und Blau</translation>
    </message>
</context>
<context>
    <name>orvanel::HistogramView</name>
    <message>
        <source>Histogram</source>
        <translation>Histogramm</translation>
    </message>
</context>
<context>
    <name>orvanel::HueStrip</name>
    <message>
        <source>Hue</source>
        <translation>Farbton</translation>
    </message>
    <message>
        <source>%1 degrees</source>
        <translation>%1 Grad</translation>
    </message>
</context>
<context>
    <name>orvanel::ImageMenuCommands</name>
    <message>
        <source>Levels...</source>
        <translation>Tonwertkorrektur …</translation>
    </message>
    <message>
        <source>Invert</source>
        <translation>Invertieren</translation>
    </message>
    <message>
        <source>Canvas Size...</source>
        <translation>Arbeitsfläche ändern …</translation>
    </message>
    <message>
        <source>Image Size...</source>
        <translation>Bildgröße …</translation>
    </message>
    <message>
        <source>Mode</source>
        <translation>Modus</translation>
    </message>
    <message>
        <source>Adjustments</source>
        <translation>Korrekturen</translation>
    </message>
    <message>
        <source>Crop</source>
        <translation>Zuschneiden</translation>
    </message>
    <message>
        <source>Trim</source>
        <translation>Ränder entfernen</translation>
    </message>
</context>
<context>
    <name>orvanel::ImageSizeDialog</name>
    <message>
        <source>Image Size</source>
        <translation>Bildgröße</translation>
    </message>
    <message>
        <source>Resize the image and all layer content.</source>
        <translation>Größe des Bildes und aller Ebeneninhalte ändern.</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Bicubic</source>
        <translation>Bikubisch</translation>
    </message>
    <message>
        <source>Bilinear</source>
        <translation>Bilinear</translation>
    </message>
    <message>
        <source>Nearest Neighbor</source>
        <translation>Nächster Nachbar</translation>
    </message>
    <message>
        <source>Resample</source>
        <translation>Neu berechnen</translation>
    </message>
    <message>
        <source>Resample:</source>
        <translation>Neu berechnen:</translation>
    </message>
    <message>
        <source>Lock aspect ratio</source>
        <translation>Seitenverhältnis sperren</translation>
    </message>
    <message>
        <source>Unlock aspect ratio</source>
        <translation>Seitenverhältnis freigeben</translation>
    </message>
</context>
<context>
    <name>orvanel::InspectorPane</name>
    <message>
        <source>No Document</source>
        <translation>Kein Dokument</translation>
    </message>
    <message>
        <source>Inspector</source>
        <translation>Inspektor</translation>
    </message>
</context>
<context>
    <name>orvanel::LayerMenuCommands</name>
    <message>
        <source>Duplicate</source>
        <translation>Duplizieren</translation>
    </message>
</context>
<context>
    <name>orvanel::LayerNSOutlineView</name>
    <message>
        <source>Layers</source>
        <translation>Ebenen</translation>
    </message>
</context>
<context>
    <name>orvanel::LayerPanelView</name>
    <message>
        <source>Layers and channels</source>
        <translation>Ebenen und Kanäle</translation>
    </message>
    <message>
        <source>Layers</source>
        <translation>Ebenen</translation>
    </message>
    <message>
        <source>Channels</source>
        <translation>Kanäle</translation>
    </message>
    <message>
        <source>New Layer</source>
        <translation>Neue Ebene</translation>
    </message>
    <message>
        <source>Adds an empty layer.</source>
        <translation>Fügt eine leere Ebene hinzu.</translation>
    </message>
    <message>
        <source>New Folder</source>
        <translation>Neuer Ordner</translation>
    </message>
    <message>
        <source>Adds a folder.</source>
        <translation>Fügt einen Ordner hinzu.</translation>
    </message>
    <message>
        <source>Delete</source>
        <translation>Löschen</translation>
    </message>
    <message>
        <source>Deletes the active layer or folder.</source>
        <translation>Löscht die aktive Ebene oder den aktiven Ordner.</translation>
    </message>
    <message>
        <source>Remove Layer Mask</source>
        <translation>Ebenenmaske entfernen</translation>
    </message>
    <message>
        <source>Add Layer Mask</source>
        <translation>Ebenenmaske hinzufügen</translation>
    </message>
    <message>
        <source>Removes the mask and leaves the pixels as they are.</source>
        <translation>Entfernt die Maske und lässt die Pixel, wie sie sind.</translation>
    </message>
    <message>
        <source>Shows what is selected, or everything if nothing is.</source>
        <translation>Zeigt, was ausgewählt ist, oder alles, wenn nichts ausgewählt ist.</translation>
    </message>
</context>
<context>
    <name>orvanel::LayerRowDelegate</name>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
</context>
<context>
    <name>orvanel::LayerTreeModel</name>
    <message>
        <source>%1, folder</source>
        <translation>%1, Ordner</translation>
    </message>
    <message>
        <source>%1, layer, editing its mask</source>
        <translation>%1, Ebene, Maske wird bearbeitet</translation>
    </message>
    <message>
        <source>%1, layer</source>
        <translation>%1, Ebene</translation>
    </message>
    <message>
        <source>Visible</source>
        <translation>Sichtbar</translation>
    </message>
    <message>
        <source>Hidden</source>
        <translation>Ausgeblendet</translation>
    </message>
    <message>
        <source>Linked</source>
        <translation>Verknüpft</translation>
    </message>
    <message>
        <source>Unlinked</source>
        <translation>Nicht verknüpft</translation>
    </message>
    <message>
        <source>Locked</source>
        <translation>Gesperrt</translation>
    </message>
    <message>
        <source>Unlocked</source>
        <translation>Nicht gesperrt</translation>
    </message>
    <message>
        <source>Layer</source>
        <translation>Ebene</translation>
    </message>
    <message>
        <source>Visibility</source>
        <translation>Sichtbarkeit</translation>
    </message>
    <message>
        <source>Mask link</source>
        <translation>Maskenverknüpfung</translation>
    </message>
    <message>
        <source>Lock</source>
        <translation>Sperre</translation>
    </message>
    <message>
        <source>No mask</source>
        <translation>Keine Maske</translation>
    </message>
</context>
<context>
    <name>orvanel::LevelsContentView</name>
    <message>
        <source>Black:</source>
        <translation>Schwarz:</translation>
    </message>
    <message>
        <source>Black point</source>
        <translation>Schwarzpunkt</translation>
    </message>
    <message>
        <source>Gamma:</source>
        <translation>Gamma:</translation>
    </message>
    <message>
        <source>Gamma</source>
        <translation>Gamma</translation>
    </message>
    <message>
        <source>White:</source>
        <translation>Weiß:</translation>
    </message>
    <message>
        <source>White point</source>
        <translation>Weißpunkt</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>orvanel::LevelsWindow</name>
    <message>
        <source>Levels</source>
        <translation>Tonwertkorrektur</translation>
    </message>
</context>
<context>
    <name>orvanel::LoadingCard</name>
    <message>
        <source>A file that is being opened</source>
        <translation>Eine Datei, die geöffnet wird</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
    <message>
        <source>Cancel (Esc): stop opening the file</source>
        <translation>Abbrechen (Esc): Öffnen der Datei beenden</translation>
    </message>
    <message>
        <source>Opening %1...</source>
        <translation>%1 wird geöffnet …</translation>
    </message>
    <message numerus="yes">
        <source>Opening %1 and %n more...</source>
        <translation>
            <numerusform>%1 und %n weitere Datei werden geöffnet …</numerusform>
            <numerusform>%1 und %n weitere Dateien werden geöffnet …</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>orvanel::LoadingTab</name>
    <message>
        <source>Cancel opening this file</source>
        <translation>Öffnen dieser Datei abbrechen</translation>
    </message>
    <message>
        <source>A file that is being opened</source>
        <translation>Eine Datei, die geöffnet wird</translation>
    </message>
    <message>
        <source>%1, opening</source>
        <translation>%1, wird geöffnet</translation>
    </message>
    <message>
        <source>Opening %1</source>
        <translation>%1 wird geöffnet</translation>
    </message>
    <message>
        <source>Cancel opening %1</source>
        <translation>Öffnen von %1 abbrechen</translation>
    </message>
</context>
<context>
    <name>orvanel::MagicWandOptions</name>
    <message>
        <source>Contiguous</source>
        <translation>Zusammenhängend</translation>
    </message>
    <message>
        <source>Selects only pixels that are connected with the clicked one</source>
        <translation>Wählt nur Pixel aus, die mit dem angeklickten zusammenhängen</translation>
    </message>
    <message>
        <source>Anti-aliased</source>
        <translation>Kantenglättung</translation>
    </message>
    <message>
        <source>Smooths the edge of a new selection</source>
        <translation>Glättet den Rand einer neuen Auswahl</translation>
    </message>
    <message>
        <source>Sample All Layers</source>
        <translation>Alle Ebenen aufnehmen</translation>
    </message>
    <message>
        <source>Looks at all visible layers together, not at the active one</source>
        <translation>Berücksichtigt alle sichtbaren Ebenen statt nur der aktiven</translation>
    </message>
    <message>
        <source>Tolerance:</source>
        <translation>Toleranz:</translation>
    </message>
    <message>
        <source>How much a color may differ from that of the clicked pixel</source>
        <translation>Wie weit eine Farbe von der des angeklickten Pixels abweichen darf</translation>
    </message>
</context>
<context>
    <name>orvanel::MainWindow</name>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>&amp;Image</source>
        <translation>B&amp;ild</translation>
    </message>
    <message>
        <source>&amp;Layer</source>
        <translation>&amp;Ebene</translation>
    </message>
    <message>
        <source>&amp;Select</source>
        <translation>&amp;Auswahl</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>A&amp;nsicht</translation>
    </message>
    <message>
        <source>&amp;Window</source>
        <translation>&amp;Fenster</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>Full Screen</source>
        <translation>Vollbild</translation>
    </message>
    <message>
        <source>Keyboard Shortcuts</source>
        <translation>Tastenkürzel</translation>
    </message>
    <message>
        <source>Opening %1</source>
        <translation>%1 wird geöffnet</translation>
    </message>
</context>
<context>
    <name>orvanel::NewDocumentCommand</name>
    <message>
        <source>New...</source>
        <translation>Neu …</translation>
    </message>
</context>
<context>
    <name>orvanel::NewDocumentDialog</name>
    <message>
        <source>New Document</source>
        <translation>Neues Dokument</translation>
    </message>
    <message>
        <source>Enter the dimensions and color mode for the new document.</source>
        <translation>Maße und Farbmodus des neuen Dokuments eingeben.</translation>
    </message>
    <message>
        <source>Create</source>
        <translation>Erstellen</translation>
    </message>
    <message>
        <source>Color Mode</source>
        <translation>Farbmodus</translation>
    </message>
    <message>
        <source>Color Mode:</source>
        <translation>Farbmodus:</translation>
    </message>
</context>
<context>
    <name>orvanel::NoDocumentView</name>
    <message>
        <source>Create a new document</source>
        <translation>Neues Dokument erstellen</translation>
    </message>
    <message>
        <source>open an existing one</source>
        <translation>ein vorhandenes öffnen</translation>
    </message>
    <message>
        <source> or </source>
        <translation> oder </translation>
    </message>
    <message>
        <source>.</source>
        <translation>.</translation>
    </message>
    <message>
        <source>No Document Open</source>
        <translation>Kein Dokument geöffnet</translation>
    </message>
</context>
<context>
    <name>orvanel::NodePropertiesSection</name>
    <message>
        <source>Opacity:</source>
        <translation>Deckkraft:</translation>
    </message>
    <message>
        <source>How much the layer or folder covers what is below it</source>
        <translation>Wie stark die Ebene oder der Ordner verdeckt, was darunter liegt</translation>
    </message>
    <message>
        <source>Blend Mode</source>
        <translation>Mischmodus</translation>
    </message>
    <message>
        <source>How the layer or folder mixes with what is below it</source>
        <translation>Wie sich die Ebene oder der Ordner mit dem mischt, was darunter liegt</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Layer</source>
        <translation>Ebene</translation>
    </message>
</context>
<context>
    <name>orvanel::OpenDocumentCommand</name>
    <message>
        <source>Open...</source>
        <translation>Öffnen …</translation>
    </message>
</context>
<context>
    <name>orvanel::OpenRecentCommand</name>
    <message>
        <source>Open Recent</source>
        <translation>Zuletzt geöffnet</translation>
    </message>
    <message>
        <source>Clear Menu</source>
        <translation>Menü leeren</translation>
    </message>
</context>
<context>
    <name>orvanel::OverlayScrollIndicator</name>
    <message>
        <source>Horizontal position</source>
        <translation>Waagerechte Position</translation>
    </message>
    <message>
        <source>Vertical position</source>
        <translation>Senkrechte Position</translation>
    </message>
</context>
<context>
    <name>orvanel::PixelPasteboard</name>
    <message>
        <source>The image in the clipboard can&apos;t be read.</source>
        <translation>Das Bild in der Zwischenablage kann nicht gelesen werden.</translation>
    </message>
    <message>
        <source>Failed to Paste</source>
        <translation>Einfügen fehlgeschlagen</translation>
    </message>
    <message>
        <source>Pasted in Part</source>
        <translation>Teilweise eingefügt</translation>
    </message>
    <message>
        <source>There is not enough memory for this image.</source>
        <translation>Für dieses Bild reicht der Speicher nicht aus.</translation>
    </message>
</context>
<context>
    <name>orvanel::PreviewPane</name>
    <message>
        <source>Preview</source>
        <translation>Vorschau</translation>
    </message>
    <message>
        <source>No preview</source>
        <translation>Keine Vorschau</translation>
    </message>
</context>
<context>
    <name>orvanel::ProgressLine</name>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
</context>
<context>
    <name>orvanel::QuitCommand</name>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
</context>
<context>
    <name>orvanel::RecentFilesView</name>
    <message>
        <source>Open %1</source>
        <translation>%1 öffnen</translation>
    </message>
    <message>
        <source>Recent files</source>
        <translation>Zuletzt geöffnete Dateien</translation>
    </message>
</context>
<context>
    <name>orvanel::RecoveryDialog</name>
    <message>
        <source>Continue</source>
        <translation>Fortfahren</translation>
    </message>
    <message>
        <source>Decide Later</source>
        <translation>Später entscheiden</translation>
    </message>
    <message>
        <source>Recover Unsaved Documents</source>
        <translation>Ungespeicherte Dokumente wiederherstellen</translation>
    </message>
    <message>
        <source>Orvanel ended before these were saved. A restored document opens with its changes and overwrites nothing until you save it.</source>
        <translation>Orvanel wurde beendet, bevor diese Dokumente gespeichert waren. Ein wiederhergestelltes Dokument öffnet sich mit seinen Änderungen und überschreibt nichts, bis Sie es speichern.</translation>
    </message>
    <message>
        <source>Decide Later (Esc): all of them are offered again at the next start</source>
        <translation>Später entscheiden (Esc): Alle werden beim nächsten Start wieder angeboten</translation>
    </message>
    <message>
        <source>Never saved to a file</source>
        <translation>Noch in keiner Datei gespeichert</translation>
    </message>
    <message>
        <source>Last changed %1</source>
        <translation>Zuletzt geändert: %1</translation>
    </message>
    <message>
        <source>Restore</source>
        <translation>Wiederherstellen</translation>
    </message>
    <message>
        <source>Discard</source>
        <translation>Verwerfen</translation>
    </message>
    <message>
        <source>What to do with %1</source>
        <translation>Was mit %1 geschehen soll</translation>
    </message>
    <message>
        <source>Unknown document</source>
        <translation>Unbekanntes Dokument</translation>
    </message>
</context>
<context>
    <name>orvanel::SVPicker</name>
    <message>
        <source>Saturation and brightness</source>
        <translation>Sättigung und Helligkeit</translation>
    </message>
    <message>
        <source>Saturation %1%, brightness %2%</source>
        <translation>Sättigung %1 %, Helligkeit %2 %</translation>
    </message>
</context>
<context>
    <name>orvanel::SaveAsDocumentCommand</name>
    <message>
        <source>Save As...</source>
        <translation>Speichern unter …</translation>
    </message>
</context>
<context>
    <name>orvanel::SaveDocumentCommand</name>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
</context>
<context>
    <name>orvanel::SelectMenuCommands</name>
    <message>
        <source>All</source>
        <translation>Alles</translation>
    </message>
    <message>
        <source>Deselect</source>
        <translation>Auswahl aufheben</translation>
    </message>
    <message>
        <source>Inverse</source>
        <translation>Umkehren</translation>
    </message>
</context>
<context>
    <name>orvanel::SelectionOptions</name>
    <message>
        <source>Feather:</source>
        <translation>Weiche Kante:</translation>
    </message>
    <message>
        <source>How far the edge of a new selection fades, in pixels</source>
        <translation>Wie weit der Rand einer neuen Auswahl ausläuft, in Pixeln</translation>
    </message>
</context>
<context>
    <name>orvanel::ShortcutsWindow</name>
    <message>
        <source> or </source>
        <translation> oder </translation>
    </message>
    <message>
        <source>Tools and single keys</source>
        <translation>Werkzeuge und einzelne Tasten</translation>
    </message>
    <message>
        <source>Keyboard Shortcuts</source>
        <translation>Tastenkürzel</translation>
    </message>
    <message>
        <source>List of shortcuts</source>
        <translation>Liste der Tastenkürzel</translation>
    </message>
</context>
<context>
    <name>orvanel::SidePanels</name>
    <message>
        <source>Layer</source>
        <translation>Ebene</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Foreground Color</source>
        <translation>Vordergrundfarbe</translation>
    </message>
    <message>
        <source>Background Color</source>
        <translation>Hintergrundfarbe</translation>
    </message>
</context>
<context>
    <name>orvanel::SizeDialog</name>
    <message>
        <source>Width</source>
        <translation>Breite</translation>
    </message>
    <message>
        <source>Height</source>
        <translation>Höhe</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>px</source>
        <translation>px</translation>
    </message>
    <message>
        <source>Width:</source>
        <translation>Breite:</translation>
    </message>
    <message>
        <source>Height:</source>
        <translation>Höhe:</translation>
    </message>
</context>
<context>
    <name>orvanel::SliderDropdown</name>
    <message>
        <source>%1: slider</source>
        <translation>%1: Regler</translation>
    </message>
    <message>
        <source>Set %1 with a slider</source>
        <translation>%1 mit einem Regler einstellen</translation>
    </message>
</context>
<context>
    <name>orvanel::StatusBarPane</name>
    <message>
        <source>X: --  Y: --</source>
        <translation>X: --  Y: --</translation>
    </message>
    <message>
        <source>X: %1  Y: %2</source>
        <translation>X: %1  Y: %2</translation>
    </message>
    <message>
        <source>  W: %1  H: %2</source>
        <translation>  B: %1  H: %2</translation>
    </message>
    <message>
        <source>Status</source>
        <translation>Status</translation>
    </message>
    <message>
        <source>Zoom</source>
        <translation>Zoom</translation>
    </message>
    <message>
        <source>Pointer position</source>
        <translation>Position des Mauszeigers</translation>
    </message>
    <message>
        <source>Canvas size</source>
        <translation>Größe der Arbeitsfläche</translation>
    </message>
    <message>
        <source>Memory use</source>
        <translation>Speicherbelegung</translation>
    </message>
    <message>
        <source>Note</source>
        <translation>Hinweis</translation>
    </message>
    <message>
        <source>Memory: Layers %1, Undo %2</source>
        <translation>Speicher: Ebenen %1, Rückgängig %2</translation>
    </message>
</context>
<context>
    <name>orvanel::ToolOptionsPane</name>
    <message>
        <source>Tool options</source>
        <translation>Werkzeugoptionen</translation>
    </message>
    <message>
        <source>Press Enter to apply, Escape to cancel</source>
        <translation>Enter zum Anwenden, Esc zum Abbrechen</translation>
    </message>
    <message>
        <source>No options available</source>
        <translation>Keine Optionen verfügbar</translation>
    </message>
</context>
<context>
    <name>orvanel::ToolPalettePane</name>
    <message>
        <source>Tools</source>
        <translation>Werkzeuge</translation>
    </message>
</context>
<context>
    <name>orvanel::ViewMenuCommands</name>
    <message>
        <source>Zoom In</source>
        <translation>Vergrößern</translation>
    </message>
    <message>
        <source>Zoom Out</source>
        <translation>Verkleinern</translation>
    </message>
    <message>
        <source>100%</source>
        <translation>100 %</translation>
    </message>
    <message>
        <source>Fit on Screen</source>
        <translation>In Fenster einpassen</translation>
    </message>
</context>
<context>
    <name>orvanel::WindowDialogs</name>
    <message numerus="yes">
        <source>… and %n more</source>
        <translation>
            <numerusform>… und %n weitere</numerusform>
            <numerusform>… und %n weitere</numerusform>
        </translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Don&apos;t Save</source>
        <translation>Nicht speichern</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Select documents or image files to open</source>
        <translation>Dokumente oder Bilddateien zum Öffnen auswählen</translation>
    </message>
    <message>
        <source>Documents and Images</source>
        <translation>Dokumente und Bilder</translation>
    </message>
    <message>
        <source>All Files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
    <message>
        <source>Save As</source>
        <translation>Speichern unter</translation>
    </message>
    <message>
        <source>Orvanel Document</source>
        <translation>Orvanel-Dokument</translation>
    </message>
    <message>
        <source>Export Image</source>
        <translation>Bild exportieren</translation>
    </message>
    <message>
        <source>Format:</source>
        <translation>Format:</translation>
    </message>
    <message>
        <source>Save As...</source>
        <translation>Speichern unter …</translation>
    </message>
    <message>
        <source>Save Anyway</source>
        <translation>Trotzdem speichern</translation>
    </message>
</context>
<context>
    <name>orvanel::WindowMenuCommands</name>
    <message>
        <source>Next Tab</source>
        <translation>Nächster Tab</translation>
    </message>
    <message>
        <source>Previous Tab</source>
        <translation>Vorheriger Tab</translation>
    </message>
</context>
<context>
    <name>orvanel::ZoomOptions</name>
    <message>
        <source>Scrubby Zoom</source>
        <translation>Dynamischer Zoom</translation>
    </message>
    <message>
        <source>Zooms in or out while the pointer is dragged to the right or left</source>
        <translation>Vergrößert oder verkleinert, während der Mauszeiger nach rechts oder links gezogen wird</translation>
    </message>
</context>
<context>
    <name>sentences</name>
    <message>
        <source>A layer&apos;s data has no valid header.</source>
        <translation>Die Daten einer Ebene haben keinen gültigen Kopf.</translation>
    </message>
    <message>
        <source>A layer&apos;s data is too short.</source>
        <translation>Die Daten einer Ebene sind zu kurz.</translation>
    </message>
    <message>
        <source>An entry of the archive has an invalid name.</source>
        <translation>Ein Eintrag des Archivs hat einen ungültigen Namen.</translation>
    </message>
    <message>
        <source>Another entry has the same name.</source>
        <translation>Ein anderer Eintrag hat denselben Namen.</translation>
    </message>
    <message>
        <source>It ends too early.</source>
        <translation>Er endet zu früh.</translation>
    </message>
    <message>
        <source>It is compressed in a way that is not supported.</source>
        <translation>Er ist auf eine Weise komprimiert, die nicht unterstützt wird.</translation>
    </message>
    <message>
        <source>It is encrypted.</source>
        <translation>Er ist verschlüsselt.</translation>
    </message>
    <message>
        <source>It is missing from the archive.</source>
        <translation>Er fehlt im Archiv.</translation>
    </message>
    <message>
        <source>It is too large.</source>
        <translation>Er ist zu groß.</translation>
    </message>
    <message>
        <source>It is too long.</source>
        <translation>Er ist zu lang.</translation>
    </message>
    <message>
        <source>It is too short.</source>
        <translation>Er ist zu kurz.</translation>
    </message>
    <message>
        <source>Its checksum is wrong.</source>
        <translation>Seine Prüfsumme ist falsch.</translation>
    </message>
    <message>
        <source>Its size is impossible.</source>
        <translation>Seine Größe ist unmöglich.</translation>
    </message>
    <message>
        <source>Reading this format needs libheif.</source>
        <translation>Um dieses Format zu lesen, wird libheif benötigt.</translation>
    </message>
    <message>
        <source>The archive contains more data than its document can use.</source>
        <translation>Das Archiv enthält mehr Daten, als sein Dokument verwenden kann.</translation>
    </message>
    <message>
        <source>The archive contains no document.</source>
        <translation>Das Archiv enthält kein Dokument.</translation>
    </message>
    <message>
        <source>The archive has too many entries.</source>
        <translation>Das Archiv hat zu viele Einträge.</translation>
    </message>
    <message>
        <source>The archive is damaged or can&apos;t be read.</source>
        <translation>Das Archiv ist beschädigt oder nicht lesbar.</translation>
    </message>
    <message>
        <source>The archive&apos;s directory is damaged.</source>
        <translation>Das Verzeichnis des Archivs ist beschädigt.</translation>
    </message>
    <message>
        <source>The archive&apos;s entries are larger than the archive.</source>
        <translation>Die Einträge des Archivs sind größer als das Archiv.</translation>
    </message>
    <message>
        <source>The compressed data ends too early.</source>
        <translation>Die komprimierten Daten enden zu früh.</translation>
    </message>
    <message>
        <source>The compressed data is damaged.</source>
        <translation>Die komprimierten Daten sind beschädigt.</translation>
    </message>
    <message>
        <source>The destination is not a regular file.</source>
        <translation>Das Ziel ist keine reguläre Datei.</translation>
    </message>
    <message>
        <source>The document can&apos;t be written. An opacity is not a number.</source>
        <translation>Das Dokument kann nicht geschrieben werden. Eine Deckkraft ist keine Zahl.</translation>
    </message>
    <message>
        <source>The document has more layers than a file can hold.</source>
        <translation>Das Dokument hat mehr Ebenen, als eine Datei aufnehmen kann.</translation>
    </message>
    <message>
        <source>The document has more nodes than a file can hold.</source>
        <translation>Das Dokument hat mehr Ebenen und Ordner, als eine Datei aufnehmen kann.</translation>
    </message>
    <message>
        <source>The document has no preview.</source>
        <translation>Das Dokument hat keine Vorschau.</translation>
    </message>
    <message>
        <source>The document has two nodes with the same id.</source>
        <translation>Zwei Ebenen oder Ordner des Dokuments haben dieselbe Kennung.</translation>
    </message>
    <message>
        <source>The document&apos;s canvas is not between 1 and 16384 pixels on a side.</source>
        <translation>Die Seiten der Arbeitsfläche des Dokuments liegen nicht zwischen 1 und 16384 Pixeln.</translation>
    </message>
    <message>
        <source>The drawing can&apos;t be unpacked.</source>
        <translation>Die Zeichnung kann nicht entpackt werden.</translation>
    </message>
    <message>
        <source>The drawing&apos;s compressed data is damaged.</source>
        <translation>Die komprimierten Daten der Zeichnung sind beschädigt.</translation>
    </message>
    <message>
        <source>The file can&apos;t be written beyond its end.</source>
        <translation>Die Datei kann nicht über ihr Ende hinaus geschrieben werden.</translation>
    </message>
    <message>
        <source>The file ends before the image does.</source>
        <translation>Die Datei endet vor dem Bild.</translation>
    </message>
    <message>
        <source>The file is damaged or incomplete: part of the image is missing.</source>
        <translation>Die Datei ist beschädigt oder unvollständig: Ein Teil des Bildes fehlt.</translation>
    </message>
    <message>
        <source>The file is empty.</source>
        <translation>Die Datei ist leer.</translation>
    </message>
    <message>
        <source>The file on the disk differs from what was written.</source>
        <translation>Die Datei auf dem Datenträger weicht vom Geschriebenen ab.</translation>
    </message>
    <message>
        <source>The image couldn&apos;t be encoded in this format.</source>
        <translation>Das Bild konnte nicht in diesem Format codiert werden.</translation>
    </message>
    <message>
        <source>The image has no pixels to write.</source>
        <translation>Das Bild enthält keine Pixel zum Schreiben.</translation>
    </message>
    <message>
        <source>The image is damaged.</source>
        <translation>Das Bild ist beschädigt.</translation>
    </message>
    <message>
        <source>The operation was cancelled.</source>
        <translation>Der Vorgang wurde abgebrochen.</translation>
    </message>
    <message>
        <source>The preview is damaged.</source>
        <translation>Die Vorschau ist beschädigt.</translation>
    </message>
    <message>
        <source>The preview is not a PNG image.</source>
        <translation>Die Vorschau ist kein PNG-Bild.</translation>
    </message>
    <message>
        <source>The preview is too large.</source>
        <translation>Die Vorschau ist zu groß.</translation>
    </message>
    <message>
        <source>The entry is missing.</source>
        <translation>Der Eintrag fehlt.</translation>
    </message>
    <message>
        <source>The file is no longer there.</source>
        <translation>Die Datei ist nicht mehr da.</translation>
    </message>
    <message>
        <source>The file was changed by another program.</source>
        <translation>Die Datei wurde von einem anderen Programm verändert.</translation>
    </message>
    <message>
        <source>The save was cancelled.</source>
        <translation>Das Speichern wurde abgebrochen.</translation>
    </message>
    <message>
        <source>There is not enough memory for this document.</source>
        <translation>Für dieses Dokument reicht der Speicher nicht aus.</translation>
    </message>
    <message>
        <source>There is not enough memory for this image.</source>
        <translation>Für dieses Bild reicht der Speicher nicht aus.</translation>
    </message>
    <message>
        <source>There is not enough memory to write this image.</source>
        <translation>Um dieses Bild zu schreiben, reicht der Speicher nicht aus.</translation>
    </message>
    <message>
        <source>This is a folder, not a file.</source>
        <translation>Das ist ein Ordner, keine Datei.</translation>
    </message>
    <message>
        <source>This is not a regular file.</source>
        <translation>Das ist keine reguläre Datei.</translation>
    </message>
    <message>
        <source>Only the first of %1 pictures was opened.</source>
        <translation>Nur das erste von %1 Bildern wurde geöffnet.</translation>
    </message>
    <message>
        <source>The document has format version %1, which can&apos;t be read.</source>
        <translation>Das Dokument hat die Formatversion %1, die nicht gelesen werden kann.</translation>
    </message>
    <message>
        <source>The document&apos;s manifest is damaged: %1.</source>
        <translation>Die Beschreibung des Dokuments ist beschädigt: %1.</translation>
    </message>
    <message>
        <source>The drawing is damaged: %1.</source>
        <translation>Die Zeichnung ist beschädigt: %1.</translation>
    </message>
    <message>
        <source>The drawing is larger than %1 MiB.</source>
        <translation>Die Zeichnung ist größer als %1 MiB.</translation>
    </message>
    <message>
        <source>The entry &quot;%1&quot; can&apos;t be read. %2</source>
        <translation>Der Eintrag „%1“ kann nicht gelesen werden. %2</translation>
    </message>
    <message>
        <source>The entry &quot;%1&quot; can&apos;t be read. Its checksum is wrong.</source>
        <translation>Der Eintrag „%1“ kann nicht gelesen werden. Seine Prüfsumme ist falsch.</translation>
    </message>
    <message>
        <source>The entry &quot;%1&quot; doesn&apos;t match the document&apos;s canvas and color mode.</source>
        <translation>Der Eintrag „%1“ passt nicht zu Arbeitsfläche und Farbmodus des Dokuments.</translation>
    </message>
    <message>
        <source>The file can&apos;t be closed: %1.</source>
        <translation>Die Datei kann nicht geschlossen werden: %1.</translation>
    </message>
    <message>
        <source>The file can&apos;t be created: %1.</source>
        <translation>Die Datei kann nicht angelegt werden: %1.</translation>
    </message>
    <message>
        <source>The file can&apos;t be opened: %1.</source>
        <translation>Die Datei kann nicht geöffnet werden: %1.</translation>
    </message>
    <message>
        <source>The file can&apos;t be replaced: %1.</source>
        <translation>Die Datei kann nicht ersetzt werden: %1.</translation>
    </message>
    <message>
        <source>The file can&apos;t be written to the disk: %1.</source>
        <translation>Die Datei kann nicht auf den Datenträger geschrieben werden: %1.</translation>
    </message>
    <message>
        <source>The file can&apos;t be written: %1.</source>
        <translation>Die Datei kann nicht geschrieben werden: %1.</translation>
    </message>
    <message>
        <source>The file is not a readable archive.</source>
        <translation>Die Datei ist kein lesbares Archiv.</translation>
    </message>
    <message>
        <source>The image is larger than %1 pixels on a side.</source>
        <translation>Eine Seite des Bildes ist länger als %1 Pixel.</translation>
    </message>
    <message>
        <source>The document&apos;s file can&apos;t be read.</source>
        <translation>Die Datei des Dokuments kann nicht gelesen werden.</translation>
    </message>
    <message>
        <source>Recovery data can&apos;t be read back.</source>
        <translation>Die Wiederherstellungsdaten können nicht zurückgelesen werden.</translation>
    </message>
    <message>
        <source>Recovery data can&apos;t be written.</source>
        <translation>Es können keine Wiederherstellungsdaten geschrieben werden.</translation>
    </message>
    <message>
        <source>Recovery data has reached its size limit.</source>
        <translation>Die Wiederherstellungsdaten haben ihre Größengrenze erreicht.</translation>
    </message>
    <message>
        <source>The disk is nearly full. The remaining space is left for your files.</source>
        <translation>Der Datenträger ist fast voll. Der restliche Platz bleibt Ihren Dateien.</translation>
    </message>
    <message>
        <source>The disk is slow to write recovery data.</source>
        <translation>Der Datenträger schreibt die Wiederherstellungsdaten nur langsam.</translation>
    </message>
    <message>
        <source>The document can&apos;t be written.</source>
        <translation>Das Dokument kann nicht geschrieben werden.</translation>
    </message>
    <message>
        <source>The document has more nodes than recovery data can hold.</source>
        <translation>Das Dokument hat mehr Ebenen und Ordner, als die Wiederherstellungsdaten aufnehmen können.</translation>
    </message>
    <message>
        <source>The document is open in another window.</source>
        <translation>Das Dokument ist in einem anderen Fenster geöffnet.</translation>
    </message>
    <message>
        <source>The recovery data is damaged.</source>
        <translation>Die Wiederherstellungsdaten sind beschädigt.</translation>
    </message>
    <message>
        <source>There is no such document to restore.</source>
        <translation>Es gibt kein solches Dokument, das sich wiederherstellen ließe.</translation>
    </message>
    <message>
        <source>Recovery data can&apos;t be written: %1.</source>
        <translation>Es können keine Wiederherstellungsdaten geschrieben werden: %1.</translation>
    </message>
    <message>
        <source>It is inside a layer, or inside a node that is left out.</source>
        <translation>Es liegt in einer Ebene oder in einem Ordner, der weggelassen wird.</translation>
    </message>
    <message>
        <source>Its id is not valid.</source>
        <translation>Seine Kennung ist ungültig.</translation>
    </message>
    <message>
        <source>Its type is unknown.</source>
        <translation>Seine Art ist unbekannt.</translation>
    </message>
    <message>
        <source>The file &quot;%1&quot; has been changed or removed, so parts of these layers could not be restored and are transparent: %2.</source>
        <translation>Die Datei „%1“ ist geändert oder entfernt worden, deshalb konnten Teile dieser Ebenen nicht wiederhergestellt werden und sind durchsichtig: %2.</translation>
    </message>
    <message>
        <source>Some of the recovery data is damaged, so the last changes could not be restored.</source>
        <translation>Ein Teil der Wiederherstellungsdaten ist beschädigt, deshalb konnten die letzten Änderungen nicht wiederhergestellt werden.</translation>
    </message>
    <message>
        <source>Another version of this program has written the recovery data.</source>
        <translation>Eine andere Version dieses Programms hat die Wiederherstellungsdaten geschrieben.</translation>
    </message>
    <message>
        <source>Recovery data can&apos;t be written: the system allows no further threads.</source>
        <translation>Es können keine Wiederherstellungsdaten geschrieben werden: Das System lässt keine weiteren Threads zu.</translation>
    </message>
    <message>
        <source>Some of the recovery data can&apos;t be read, so the last changes could not be restored.</source>
        <translation>Ein Teil der Wiederherstellungsdaten kann nicht gelesen werden, deshalb konnten die letzten Änderungen nicht wiederhergestellt werden.</translation>
    </message>
    <message>
        <source>The recovery data can&apos;t be read: %1.</source>
        <translation>Die Wiederherstellungsdaten können nicht gelesen werden: %1.</translation>
    </message>
    <message>
        <source>The file has been replaced, but may not survive a power cut: %1.</source>
        <translation>Die Datei wurde ersetzt, übersteht aber vielleicht keinen Stromausfall: %1.</translation>
    </message>
    <message>
        <source>The file is damaged or incomplete.</source>
        <translation>Die Datei ist beschädigt oder unvollständig.</translation>
    </message>
    <message>
        <source>Another file has appeared there.</source>
        <translation>Dort ist eine andere Datei erschienen.</translation>
    </message>
    <message>
        <source>The file holds another version of the document than the one that was restored.</source>
        <translation>Die Datei enthält eine andere Fassung des Dokuments als die wiederhergestellte.</translation>
    </message>
    <message>
        <source>The id of its mask is not valid.</source>
        <translation>Die Kennung seiner Maske ist ungültig.</translation>
    </message>
    <message>
        <source>The recovery data can&apos;t be removed: %1.</source>
        <translation>Die Wiederherstellungsdaten können nicht entfernt werden: %1.</translation>
    </message>
    <message>
        <source>The file &quot;%1&quot; holds another version of this document, which you can open. Of the restored one, parts of these layers are missing and transparent: %2.</source>
        <translation>Die Datei „%1“ enthält eine andere Fassung dieses Dokuments, die Sie öffnen können. In der wiederhergestellten fehlen Teile dieser Ebenen und sind durchsichtig: %2.</translation>
    </message>
</context>
</TS>

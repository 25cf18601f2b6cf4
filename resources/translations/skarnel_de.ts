<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name>AccessibleView</name>
    <message>
        <source>%1 by %2 pixels, zoom %3 %</source>
        <translation>%1 mal %2 Pixel, Zoom %3 %</translation>
    </message>
    <message>
        <source>cropped to %1 by %2 at %3, %4</source>
        <translation>zugeschnitten auf %1 mal %2 bei %3, %4</translation>
    </message>
    <message>
        <source>turned by %1°</source>
        <translation>um %1° gedreht</translation>
    </message>
    <message>
        <source>selected %1 by %2 at %3, %4</source>
        <translation>ausgewählt: %1 mal %2 bei %3, %4</translation>
    </message>
    <message>
        <source>marks: %1, the last from %2, %3 to %4, %5</source>
        <translation>Markierungen: %1, die letzte von %2, %3 bis %4, %5</translation>
    </message>
    <message>
        <source>Return begins a selection; arrow keys move it, with Shift they change its size, with Ctrl they go further; Escape takes it away</source>
        <translation>Eingabe beginnt eine Auswahl; Pfeiltasten verschieben sie, mit Umschalt ändern sie die Größe, mit Strg in größeren Schritten; Esc hebt sie auf</translation>
    </message>
    <message>
        <source>Return begins a frame; arrow keys move it, with Shift they change its size, with Ctrl they go further; Return crops, Escape gives up</source>
        <translation>Eingabe beginnt einen Rahmen; Pfeiltasten verschieben ihn, mit Umschalt ändern sie die Größe, mit Strg in größeren Schritten; Eingabe schneidet zu, Esc bricht ab</translation>
    </message>
    <message>
        <source>Left and right arrow keys turn the picture, with Shift in steps; Escape turns it back</source>
        <translation>Die Pfeiltasten links und rechts drehen das Bild, mit Umschalt in Stufen; Esc dreht es zurück</translation>
    </message>
    <message>
        <source>Return puts a mark in the middle; arrow keys move it, with Shift they change its size, with Ctrl they go further; Return keeps it, Escape takes it away</source>
        <translation>Eingabe setzt eine Markierung in die Mitte; Pfeiltasten verschieben sie, mit Umschalt ändern sie die Größe, mit Strg in größeren Schritten; Eingabe behält sie, Esc entfernt sie</translation>
    </message>
    <message>
        <source>%1, opacity %2 %</source>
        <translation>%1, Deckkraft %2 %</translation>
    </message>
</context>
<context>
    <name>ColorPanel</name>
    <message>
        <source>Colours</source>
        <translation>Farben</translation>
    </message>
</context>
<context>
    <name>OpenPanel</name>
    <message>
        <source>Pictures</source>
        <translation>Bilder</translation>
    </message>
</context>
<context>
    <name>SavePanel</name>
    <message>
        <source>Save Result</source>
        <translation>Ergebnis speichern</translation>
    </message>
    <message>
        <source>Save in:</source>
        <translation>Speichern in:</translation>
    </message>
</context>
<context>
    <name>skarnel::AnnotateBar</name>
    <message>
        <source>Red</source>
        <translation>Rot</translation>
    </message>
    <message>
        <source>Yellow</source>
        <translation>Gelb</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Blau</translation>
    </message>
    <message>
        <source>White</source>
        <translation>Weiß</translation>
    </message>
    <message>
        <source>Ellipse</source>
        <translation>Ellipse</translation>
    </message>
    <message>
        <source>Arrow</source>
        <translation>Pfeil</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>Text</translation>
    </message>
    <message>
        <source>Remove all marks</source>
        <translation>Alle Markierungen entfernen</translation>
    </message>
</context>
<context>
    <name>skarnel::Application</name>
    <message>
        <source>Only a picture file of this computer can be dropped here.</source>
        <translation>Hier kann nur eine Bilddatei von diesem Computer abgelegt werden.</translation>
    </message>
    <message>
        <source>The page cannot be opened: %1</source>
        <translation>Die Seite kann nicht geöffnet werden: %1</translation>
    </message>
    <message>
        <source>“%1” cannot be read: %2.</source>
        <translation>„%1“ kann nicht gelesen werden: %2.</translation>
    </message>
    <message>
        <source>“%1” is no picture that can be opened.</source>
        <translation>„%1“ ist kein Bild, das geöffnet werden kann.</translation>
    </message>
    <message>
        <source>“%1” is damaged and cannot be opened.</source>
        <translation>„%1“ ist beschädigt und kann nicht geöffnet werden.</translation>
    </message>
    <message>
        <source>“%1” cannot be opened: %2.</source>
        <translation>„%1“ kann nicht geöffnet werden: %2.</translation>
    </message>
    <message>
        <source>The picture waits under Open Recent.</source>
        <translation>Das Bild steht unter „Zuletzt geöffnet“ bereit.</translation>
    </message>
    <message>
        <source>There is no picture on the clipboard.</source>
        <translation>Die Zwischenablage enthält kein Bild.</translation>
    </message>
    <message>
        <source>Pasted Picture</source>
        <translation>Eingefügtes Bild</translation>
    </message>
    <message>
        <source>The picture cannot be pasted.</source>
        <translation>Das Bild kann nicht eingefügt werden.</translation>
    </message>
    <message>
        <source>&amp;Clear Menu</source>
        <translation>Liste &amp;leeren</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>Zurücksetzen</translation>
    </message>
    <message>
        <source>About Skarnel</source>
        <translation>Über Skarnel</translation>
    </message>
    <message>
        <source>Turns a picture into its reflection.</source>
        <translation>Macht aus einem Bild dessen Spiegelbild.</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>Text</translation>
    </message>
    <message>
        <source>Saved %1</source>
        <translation>%1 gespeichert</translation>
    </message>
    <message>
        <source>Copied</source>
        <translation>Kopiert</translation>
    </message>
    <message>
        <source>Copied as PNG</source>
        <translation>Als PNG kopiert</translation>
    </message>
    <message>
        <source>The text cannot be made a picture: %1.</source>
        <translation>Aus dem Text kann kein Bild werden: %1.</translation>
    </message>
    <message>
        <source>The text cannot be made a picture.</source>
        <translation>Aus dem Text kann kein Bild werden.</translation>
    </message>
    <message>
        <source>Saving “%1” …</source>
        <translation>„%1“ wird gespeichert …</translation>
    </message>
</context>
<context>
    <name>skarnel::Companions</name>
    <message>
        <source>Looks</source>
        <translation>Stile</translation>
    </message>
    <message>
        <source>Show &amp;Looks</source>
        <translation>St&amp;ile anzeigen</translation>
    </message>
    <message>
        <source>Show the looks below the picture</source>
        <translation>Die Stile unter dem Bild anzeigen</translation>
    </message>
    <message>
        <source>User&apos;s &amp;Guide</source>
        <translation>&amp;Benutzerhandbuch</translation>
    </message>
    <message>
        <source>Open the guide that came with the program</source>
        <translation>Das mitgelieferte Handbuch öffnen</translation>
    </message>
    <message>
        <source>The result cannot be dragged: %1.</source>
        <translation>Das Ergebnis kann nicht gezogen werden: %1.</translation>
    </message>
    <message>
        <source>Pictu&amp;re Alone</source>
        <translation>Bild oh&amp;ne Spiegelbild</translation>
    </message>
    <message>
        <source>Space, held</source>
        <translation>Leertaste halten</translation>
    </message>
    <message>
        <source>Show the picture without its reflection</source>
        <translation>Das Bild ohne sein Spiegelbild zeigen</translation>
    </message>
    <message>
        <source>Save Loo&amp;k…</source>
        <translation>Sti&amp;l speichern…</translation>
    </message>
    <message>
        <source>Save the settings as a look</source>
        <translation>Die Einstellungen als Stil speichern</translation>
    </message>
</context>
<context>
    <name>skarnel::CompareOverlay</name>
    <message>
        <source>The picture without its reflection</source>
        <translation>Das Bild ohne sein Spiegelbild</translation>
    </message>
</context>
<context>
    <name>skarnel::MainActions</name>
    <message>
        <source>&amp;Open…</source>
        <translation>&amp;Öffnen…</translation>
    </message>
    <message>
        <source>Open a photo</source>
        <translation>Ein Foto öffnen</translation>
    </message>
    <message>
        <source>&amp;Save…</source>
        <translation>&amp;Speichern…</translation>
    </message>
    <message>
        <source>Save the result</source>
        <translation>Das Ergebnis speichern</translation>
    </message>
    <message>
        <source>Save and &amp;Edit…</source>
        <translation>Speichern und &amp;bearbeiten…</translation>
    </message>
    <message>
        <source>Save the result and edit</source>
        <translation>Das Ergebnis speichern und bearbeiten</translation>
    </message>
    <message>
        <source>&amp;Close Without Saving</source>
        <translation>Schließen &amp;ohne Speichern</translation>
    </message>
    <message>
        <source>Hide the window; starting the program again shows it</source>
        <translation>Das Fenster ausblenden; ein neuer Programmstart zeigt es wieder</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>B&amp;eenden</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Rückgängig</translation>
    </message>
    <message>
        <source>Undo the last change of the settings</source>
        <translation>Die letzte Änderung der Einstellungen rückgängig machen</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Wiederherstellen</translation>
    </message>
    <message>
        <source>Redo the change of the settings</source>
        <translation>Die Änderung der Einstellungen wiederherstellen</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>Copy the result</source>
        <translation>Das Ergebnis kopieren</translation>
    </message>
    <message>
        <source>Copy as &amp;PNG</source>
        <translation>Als &amp;PNG kopieren</translation>
    </message>
    <message>
        <source>Copy the result for programs that take no TIFF</source>
        <translation>Das Ergebnis für Programme kopieren, die kein TIFF annehmen</translation>
    </message>
    <message>
        <source>Copy Se&amp;lection</source>
        <translation>&amp;Auswahl kopieren</translation>
    </message>
    <message>
        <source>Copy the selected part of what is shown</source>
        <translation>Den ausgewählten Teil der Anzeige kopieren</translation>
    </message>
    <message>
        <source>Make the picture on the clipboard the source</source>
        <translation>Das Bild der Zwischenablage als Ausgangsbild verwenden</translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation>Alles au&amp;swählen</translation>
    </message>
    <message>
        <source>Select the whole picture</source>
        <translation>Das ganze Bild auswählen</translation>
    </message>
    <message>
        <source>Re&amp;set Settings</source>
        <translation>Einstellungen &amp;zurücksetzen</translation>
    </message>
    <message>
        <source>Return every setting to its default</source>
        <translation>Jede Einstellung auf ihren Vorgabewert zurücksetzen</translation>
    </message>
    <message>
        <source>Play a S&amp;ound After Copying</source>
        <translation>&amp;Ton nach dem Kopieren abspielen</translation>
    </message>
    <message>
        <source>Play a sound after copying</source>
        <translation>Nach dem Kopieren einen Ton abspielen</translation>
    </message>
    <message>
        <source>Zoom &amp;Out</source>
        <translation>Ver&amp;kleinern</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>Ansicht verkleinern</translation>
    </message>
    <message>
        <source>Zoom &amp;In</source>
        <translation>&amp;Vergrößern</translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation>Ansicht vergrößern</translation>
    </message>
    <message>
        <source>&amp;Actual Size</source>
        <translation>&amp;Originalgröße</translation>
    </message>
    <message>
        <source>One image pixel on one screen pixel</source>
        <translation>Ein Bildpixel auf einem Bildschirmpixel</translation>
    </message>
    <message>
        <source>&amp;Fit to Window</source>
        <translation>An Fenster an&amp;passen</translation>
    </message>
    <message>
        <source>Show the whole picture</source>
        <translation>Das ganze Bild zeigen</translation>
    </message>
    <message>
        <source>&amp;Checkerboard</source>
        <translation>&amp;Schachbrettmuster</translation>
    </message>
    <message>
        <source>Show a checkerboard where the result is transparent</source>
        <translation>Ein Schachbrettmuster zeigen, wo das Ergebnis durchsichtig ist</translation>
    </message>
    <message>
        <source>Show &amp;Text</source>
        <translation>&amp;Text anzeigen</translation>
    </message>
    <message>
        <source>Show the text below the picture</source>
        <translation>Den Text unter dem Bild anzeigen</translation>
    </message>
    <message>
        <source>F&amp;ull Screen</source>
        <translation>Vo&amp;llbild</translation>
    </message>
    <message>
        <source>Full screen</source>
        <translation>Vollbild</translation>
    </message>
    <message>
        <source>As the &amp;System</source>
        <translation>Wie das &amp;System</translation>
    </message>
    <message>
        <source>&amp;Light</source>
        <translation>&amp;Hell</translation>
    </message>
    <message>
        <source>&amp;Dark</source>
        <translation>&amp;Dunkel</translation>
    </message>
    <message>
        <source>&amp;Move</source>
        <translation>&amp;Verschieben</translation>
    </message>
    <message>
        <source>Move the picture by dragging</source>
        <translation>Das Bild durch Ziehen verschieben</translation>
    </message>
    <message>
        <source>&amp;Select</source>
        <translation>&amp;Auswählen</translation>
    </message>
    <message>
        <source>Select a part by dragging</source>
        <translation>Einen Teil durch Ziehen auswählen</translation>
    </message>
    <message>
        <source>&amp;Crop</source>
        <translation>&amp;Zuschneiden</translation>
    </message>
    <message>
        <source>Show only the part that is dragged over; Escape shows all</source>
        <translation>Nur den überstrichenen Teil zeigen; Esc zeigt wieder alles</translation>
    </message>
    <message>
        <source>&amp;Rotate</source>
        <translation>&amp;Drehen</translation>
    </message>
    <message>
        <source>Turn what is shown by dragging; Shift turns in steps</source>
        <translation>Die Anzeige durch Ziehen drehen; mit Umschalt in Schritten</translation>
    </message>
    <message>
        <source>&amp;Annotate</source>
        <translation>&amp;Markieren</translation>
    </message>
    <message>
        <source>Put marks on what is shown</source>
        <translation>Markierungen auf die Anzeige setzen</translation>
    </message>
    <message>
        <source>Show the &amp;Whole Picture</source>
        <translation>&amp;Ganzes Bild zeigen</translation>
    </message>
    <message>
        <source>Forget crop, turn, selection and marks</source>
        <translation>Zuschnitt, Drehung, Auswahl und Markierungen verwerfen</translation>
    </message>
    <message>
        <source>&amp;Image Text</source>
        <translation>Text in &amp;Bild umwandeln</translation>
    </message>
    <message>
        <source>Make the text the picture</source>
        <translation>Den Text als Bild verwenden</translation>
    </message>
    <message>
        <source>&amp;Background Colour…</source>
        <translation>&amp;Hintergrundfarbe…</translation>
    </message>
    <message>
        <source>Choose the background colour</source>
        <translation>Die Hintergrundfarbe wählen</translation>
    </message>
    <message>
        <source>Text &amp;Colour…</source>
        <translation>Text&amp;farbe…</translation>
    </message>
    <message>
        <source>Choose the colour of the text</source>
        <translation>Die Farbe des Textes wählen</translation>
    </message>
    <message>
        <source>Skarnel &amp;Help</source>
        <translation>Skarnel-&amp;Hilfe</translation>
    </message>
    <message>
        <source>Open the product&apos;s page</source>
        <translation>Die Seite des Produkts öffnen</translation>
    </message>
    <message>
        <source>&amp;About Skarnel</source>
        <translation>&amp;Über Skarnel</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>Open &amp;Recent</source>
        <translation>Zuletzt &amp;geöffnet</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>A&amp;ppearance</source>
        <translation>Erscheinungs&amp;bild</translation>
    </message>
    <message>
        <source>&amp;Tools</source>
        <translation>&amp;Werkzeuge</translation>
    </message>
    <message>
        <source>Te&amp;xt</source>
        <translation>Te&amp;xt</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>Tools</source>
        <translation>Werkzeuge</translation>
    </message>
    <message>
        <source>Zoom</source>
        <translation>Zoom</translation>
    </message>
    <message>
        <source>&amp;Undo %1</source>
        <translation>&amp;Rückgängig: %1</translation>
    </message>
    <message>
        <source>&amp;Redo %1</source>
        <translation>&amp;Wiederherstellen: %1</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>Pas&amp;te Picture</source>
        <translation>Bild &amp;einfügen</translation>
    </message>
    <message>
        <source>Zoom: %1 %</source>
        <translation>Zoom: %1 %</translation>
    </message>
</context>
<context>
    <name>skarnel::MoreLooks</name>
    <message>
        <source>More looks</source>
        <translation>Weitere Stile</translation>
    </message>
</context>
<context>
    <name>skarnel::PresetStrip</name>
    <message>
        <source>Mirror</source>
        <translation>Spiegel</translation>
    </message>
    <message>
        <source>Subtle Floor</source>
        <translation>Dezenter Boden</translation>
    </message>
    <message>
        <source>Glossy Table</source>
        <translation>Glänzender Tisch</translation>
    </message>
    <message>
        <source>Tall Mirror</source>
        <translation>Hoher Spiegel</translation>
    </message>
    <message>
        <source>Still Water</source>
        <translation>Stilles Wasser</translation>
    </message>
    <message>
        <source>Stage</source>
        <translation>Bühne</translation>
    </message>
    <message>
        <source>Floating</source>
        <translation>Schwebend</translation>
    </message>
    <message>
        <source>Shop Window</source>
        <translation>Schaufenster</translation>
    </message>
    <message>
        <source>Card to the Left</source>
        <translation>Karte nach links</translation>
    </message>
    <message>
        <source>Card to the Right</source>
        <translation>Karte nach rechts</translation>
    </message>
    <message>
        <source>Cover</source>
        <translation>Titelbild</translation>
    </message>
    <message>
        <source>Twin</source>
        <translation>Zwilling</translation>
    </message>
    <message>
        <source>Looks</source>
        <translation>Stile</translation>
    </message>
    <message>
        <source>Save the settings as a look</source>
        <translation>Die Einstellungen als Stil speichern</translation>
    </message>
    <message>
        <source>Save as Look</source>
        <translation>Als Stil speichern</translation>
    </message>
    <message>
        <source>Return uses a look; F2 renames and Delete removes one of your own</source>
        <translation>Eingabe verwendet einen Stil; F2 benennt einen eigenen um, Entf entfernt ihn</translation>
    </message>
    <message>
        <source>&amp;Save Settings as Look</source>
        <translation>Einstellungen als Stil &amp;speichern</translation>
    </message>
    <message>
        <source>&amp;Rename</source>
        <translation>&amp;Umbenennen</translation>
    </message>
    <message>
        <source>Re&amp;move</source>
        <translation>&amp;Entfernen</translation>
    </message>
    <message>
        <source>Rename “%1”</source>
        <translation>Umbenennen von „%1“</translation>
    </message>
    <message>
        <source>Remove “%1”</source>
        <translation>Entfernen von „%1“</translation>
    </message>
</context>
<context>
    <name>skarnel::RecipeCommands</name>
    <message>
        <source>Save the settings, the background and the text as a file</source>
        <translation>Einstellungen, Hintergrund und Text als Datei speichern</translation>
    </message>
    <message>
        <source>Use the settings, the background and the text of a recipe</source>
        <translation>Einstellungen, Hintergrund und Text eines Rezepts verwenden</translation>
    </message>
    <message>
        <source>Use the settings of a recipe, or of a picture that carries one</source>
        <translation>Die Einstellungen eines Rezepts verwenden oder eines Bildes, das eines enthält</translation>
    </message>
    <message>
        <source>Save Recipe</source>
        <translation>Rezept speichern</translation>
    </message>
    <message>
        <source>Recipes (*.skarnel)</source>
        <translation>Rezepte (*.skarnel)</translation>
    </message>
    <message>
        <source>Open Recipe</source>
        <translation>Rezept öffnen</translation>
    </message>
    <message>
        <source>Take Settings From</source>
        <translation>Einstellungen übernehmen aus</translation>
    </message>
    <message>
        <source>Recipes and pictures (*.skarnel *.tif *.tiff *.png *.jpg *.jpeg)</source>
        <translation>Rezepte und Bilder (*.skarnel *.tif *.tiff *.png *.jpg *.jpeg)</translation>
    </message>
    <message>
        <source>The recipe cannot be saved: %1.</source>
        <translation>Das Rezept kann nicht gespeichert werden: %1.</translation>
    </message>
    <message>
        <source>“%1”: %2.</source>
        <translation>„%1“: %2.</translation>
    </message>
    <message>
        <source>The text of “%1” cannot be made a picture.</source>
        <translation>Aus dem Text von „%1“ lässt sich kein Bild machen.</translation>
    </message>
    <message>
        <source>Recipe</source>
        <translation>Rezept</translation>
    </message>
    <message>
        <source>The settings stay as they are while a panel is open.</source>
        <translation>Die Einstellungen bleiben, wie sie sind, solange ein Dialog offen ist.</translation>
    </message>
    <message>
        <source>Taken Settings</source>
        <translation>Übernommene Einstellungen</translation>
    </message>
    <message>
        <source>Save Reci&amp;pe…</source>
        <translation>Rezept s&amp;peichern…</translation>
    </message>
    <message>
        <source>Ope&amp;n Recipe…</source>
        <translation>Rezept ö&amp;ffnen…</translation>
    </message>
    <message>
        <source>&amp;Take Settings From…</source>
        <translation>Einstellungen &amp;übernehmen aus…</translation>
    </message>
    <message>
        <source>“%1” was saved without its settings: %2.</source>
        <translation>„%1“ wurde ohne die Einstellungen gespeichert: %2.</translation>
    </message>
</context>
<context>
    <name>skarnel::SaveOptionsView</name>
    <message>
        <source>Format</source>
        <translation>Format</translation>
    </message>
    <message>
        <source>&amp;Format:</source>
        <translation>&amp;Format:</translation>
    </message>
    <message>
        <source>Resolution:</source>
        <translation>Auflösung:</translation>
    </message>
    <message>
        <source>&amp;Keep the settings inside the file</source>
        <translation>Einstellungen in der Datei &amp;mitspeichern</translation>
    </message>
    <message>
        <source>“Take Settings From” finds them there; for a picture of text they hold the text</source>
        <translation>„Einstellungen übernehmen aus“ findet sie dort; bei einem Bild aus Text enthalten sie den Text</translation>
    </message>
    <message>
        <source>none, as the source</source>
        <translation>keine, wie das Ausgangsbild</translation>
    </message>
    <message>
        <source>%1 dpi, as the source</source>
        <translation>%1 dpi, wie das Ausgangsbild</translation>
    </message>
    <message>
        <source>Compression</source>
        <translation>Kompression</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Keine</translation>
    </message>
    <message>
        <source>LZW</source>
        <translation>LZW</translation>
    </message>
    <message>
        <source>Deflate</source>
        <translation>Deflate</translation>
    </message>
    <message>
        <source>&amp;Compression:</source>
        <translation>&amp;Kompression:</translation>
    </message>
    <message>
        <source>Fast</source>
        <translation>Schnell</translation>
    </message>
    <message>
        <source>Small</source>
        <translation>Klein</translation>
    </message>
    <message>
        <source>Quality</source>
        <translation>Qualität</translation>
    </message>
    <message>
        <source>Quality, number</source>
        <translation>Qualität, Zahl</translation>
    </message>
    <message>
        <source>&amp;Quality:</source>
        <translation>&amp;Qualität:</translation>
    </message>
</context>
<context>
    <name>skarnel::SettingsPanel</name>
    <message>
        <source>Height</source>
        <translation>Höhe</translation>
    </message>
    <message>
        <source>Height of the reflection, in percent of the picture&apos;s</source>
        <translation>Höhe des Spiegelbilds in Prozent der Bildhöhe</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>Breite</translation>
    </message>
    <message>
        <source>Widening of the reflection at its far edge, in percent of the picture&apos;s width on each side</source>
        <translation>Verbreiterung des Spiegelbilds am fernen Rand, je Seite in Prozent der Bildbreite</translation>
    </message>
    <message>
        <source>Gap</source>
        <translation>Abstand</translation>
    </message>
    <message>
        <source>Gap between picture and reflection, in percent of the reflection&apos;s height</source>
        <translation>Abstand zwischen Bild und Spiegelbild in Prozent der Höhe des Spiegelbilds</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>Beginn</translation>
    </message>
    <message>
        <source>Lift of the fade, in percent of the reflection&apos;s height</source>
        <translation>Anhebung der Ausblendung in Prozent der Höhe des Spiegelbilds</translation>
    </message>
    <message>
        <source>Gradient</source>
        <translation>Verlauf</translation>
    </message>
    <message>
        <source>Steepness of the fade, in tenths of its exponent</source>
        <translation>Steilheit der Ausblendung in Zehnteln ihres Exponenten</translation>
    </message>
    <message>
        <source>Opacity</source>
        <translation>Deckkraft</translation>
    </message>
    <message>
        <source>Peak opacity of the reflection; above 255 bright parts turn dark</source>
        <translation>Höchste Deckkraft des Spiegelbilds; über 255 werden helle Stellen dunkel</translation>
    </message>
    <message>
        <source>Turn</source>
        <translation>Drehung</translation>
    </message>
    <message>
        <source>Turn of the whole picture in perspective: level at 0, 50 and 100, strongest at 25 and 75</source>
        <translation>Perspektivische Drehung des Ganzen: keine bei 0, 50 und 100, am stärksten bei 25 und 75</translation>
    </message>
    <message>
        <source>&amp;Reset</source>
        <translation>Zu&amp;rücksetzen</translation>
    </message>
    <message>
        <source>Return every setting to its default</source>
        <translation>Jede Einstellung auf ihren Vorgabewert zurücksetzen</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>Reflection</source>
        <translation>Spiegelbild</translation>
    </message>
    <message>
        <source>Fade</source>
        <translation>Ausblendung</translation>
    </message>
    <message>
        <source>Perspective</source>
        <translation>Perspektive</translation>
    </message>
    <message>
        <source>%1, number</source>
        <translation>%1, Zahl</translation>
    </message>
    <message>
        <source>Background</source>
        <translation>Hintergrund</translation>
    </message>
    <message>
        <source>Background colour</source>
        <translation>Hintergrundfarbe</translation>
    </message>
    <message>
        <source>Choose the colour behind the picture</source>
        <translation>Die Farbe hinter dem Bild wählen</translation>
    </message>
    <message>
        <source>Background colour as #RRGGBB</source>
        <translation>Hintergrundfarbe als #RRGGBB</translation>
    </message>
    <message>
        <source>The background colour as #RRGGBB</source>
        <translation>Die Hintergrundfarbe als #RRGGBB</translation>
    </message>
    <message>
        <source>Lay the background colour under the result, so that it is saved too</source>
        <translation>Die Hintergrundfarbe unter das Ergebnis legen, sodass sie mitgespeichert wird</translation>
    </message>
    <message>
        <source>Fill with Background</source>
        <translation>Mit Hintergrund füllen</translation>
    </message>
    <message>
        <source>Fi&amp;ll the result with it</source>
        <translation>Ergebnis damit fü&amp;llen</translation>
    </message>
</context>
<context>
    <name>skarnel::TextBar</name>
    <message>
        <source>&amp;Image Text</source>
        <translation>In Bild &amp;umwandeln</translation>
    </message>
    <message>
        <source>Make the text the picture</source>
        <translation>Den Text als Bild verwenden</translation>
    </message>
    <message>
        <source>Typeface</source>
        <translation>Schriftart</translation>
    </message>
    <message>
        <source>Text size</source>
        <translation>Schriftgröße</translation>
    </message>
    <message>
        <source>Bo&amp;ld</source>
        <translation>F&amp;ett</translation>
    </message>
    <message>
        <source>Bold</source>
        <translation>Fett</translation>
    </message>
    <message>
        <source>I&amp;talic</source>
        <translation>&amp;Kursiv</translation>
    </message>
    <message>
        <source>Italic</source>
        <translation>Kursiv</translation>
    </message>
    <message>
        <source>&amp;Underline</source>
        <translation>Unterst&amp;richen</translation>
    </message>
    <message>
        <source>Underline</source>
        <translation>Unterstrichen</translation>
    </message>
    <message>
        <source>Text colour</source>
        <translation>Textfarbe</translation>
    </message>
    <message>
        <source>Align L&amp;eft</source>
        <translation>&amp;Linksbündig</translation>
    </message>
    <message>
        <source>Align left</source>
        <translation>Linksbündig</translation>
    </message>
    <message>
        <source>Ce&amp;ntre</source>
        <translation>&amp;Zentriert</translation>
    </message>
    <message>
        <source>Centre</source>
        <translation>Zentriert</translation>
    </message>
    <message>
        <source>Align &amp;Right</source>
        <translation>Recht&amp;sbündig</translation>
    </message>
    <message>
        <source>Align right</source>
        <translation>Rechtsbündig</translation>
    </message>
</context>
<context>
    <name>skarnel::TextEditor</name>
    <message>
        <source>Text to image</source>
        <translation>Umzuwandelnder Text</translation>
    </message>
    <message>
        <source>Type and style text here; Image Text makes it the picture</source>
        <translation>Hier Text eingeben und gestalten; „In Bild umwandeln“ macht ihn zum Bild</translation>
    </message>
</context>
<context>
    <name>skarnel::UserPresets</name>
    <message>
        <source>My Look</source>
        <translation>Mein Stil</translation>
    </message>
</context>
<context>
    <name>skarnel::Viewer</name>
    <message>
        <source>Picture</source>
        <translation>Bild</translation>
    </message>
    <message>
        <source>Text on the picture</source>
        <translation>Text auf dem Bild</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>Text</translation>
    </message>
    <message>
        <source>The picture with its reflection, as it would be saved; Space shows the picture alone</source>
        <translation>Das Bild mit seinem Spiegelbild, wie es gespeichert würde; die Leertaste zeigt das Bild allein</translation>
    </message>
</context>
<context>
    <name>skarnel::ViewerScrollBars</name>
    <message>
        <source>Picture, sideways</source>
        <translation>Bild, seitwärts</translation>
    </message>
    <message>
        <source>Picture, up and down</source>
        <translation>Bild, auf und ab</translation>
    </message>
</context>
</TS>

<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr">
<context>
    <name>AccessibleView</name>
    <message>
        <source>%1 by %2 pixels, zoom %3 %</source>
        <translation>%1 sur %2 pixels, zoom %3 %</translation>
    </message>
    <message>
        <source>cropped to %1 by %2 at %3, %4</source>
        <translation>recadrée à %1 sur %2 en %3, %4</translation>
    </message>
    <message>
        <source>turned by %1°</source>
        <translation>tournée de %1°</translation>
    </message>
    <message>
        <source>selected %1 by %2 at %3, %4</source>
        <translation>sélection : %1 sur %2 en %3, %4</translation>
    </message>
    <message>
        <source>marks: %1, the last from %2, %3 to %4, %5</source>
        <translation>annotations : %1, la dernière de %2, %3 à %4, %5</translation>
    </message>
    <message>
        <source>Return begins a selection; arrow keys move it, with Shift they change its size, with Ctrl they go further; Escape takes it away</source>
        <translation>Entrée commence une sélection ; les flèches la déplacent, avec Maj elles changent sa taille, avec Ctrl elles vont plus loin ; Échap la retire</translation>
    </message>
    <message>
        <source>Return begins a frame; arrow keys move it, with Shift they change its size, with Ctrl they go further; Return crops, Escape gives up</source>
        <translation>Entrée commence un cadre ; les flèches le déplacent, avec Maj elles changent sa taille, avec Ctrl elles vont plus loin ; Entrée recadre, Échap abandonne</translation>
    </message>
    <message>
        <source>Left and right arrow keys turn the picture, with Shift in steps; Escape turns it back</source>
        <translation>Les flèches gauche et droite tournent l’image, avec Maj par paliers ; Échap annule la rotation</translation>
    </message>
    <message>
        <source>Return puts a mark in the middle; arrow keys move it, with Shift they change its size, with Ctrl they go further; Return keeps it, Escape takes it away</source>
        <translation>Entrée place une annotation au centre ; les flèches la déplacent, avec Maj elles changent sa taille, avec Ctrl elles vont plus loin ; Entrée la garde, Échap la retire</translation>
    </message>
    <message>
        <source>%1, opacity %2 %</source>
        <translation>%1, opacité %2 %</translation>
    </message>
</context>
<context>
    <name>ColorPanel</name>
    <message>
        <source>Colours</source>
        <translation>Couleurs</translation>
    </message>
</context>
<context>
    <name>OpenPanel</name>
    <message>
        <source>Pictures</source>
        <translation>Images</translation>
    </message>
</context>
<context>
    <name>SavePanel</name>
    <message>
        <source>Save Result</source>
        <translation>Enregistrer le résultat</translation>
    </message>
    <message>
        <source>Save in:</source>
        <translation>Enregistrer dans :</translation>
    </message>
</context>
<context>
    <name>skarnel::AnnotateBar</name>
    <message>
        <source>Red</source>
        <translation>Rouge</translation>
    </message>
    <message>
        <source>Yellow</source>
        <translation>Jaune</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Bleu</translation>
    </message>
    <message>
        <source>White</source>
        <translation>Blanc</translation>
    </message>
    <message>
        <source>Ellipse</source>
        <translation>Ellipse</translation>
    </message>
    <message>
        <source>Arrow</source>
        <translation>Flèche</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>Texte</translation>
    </message>
    <message>
        <source>Remove all marks</source>
        <translation>Retirer toutes les annotations</translation>
    </message>
</context>
<context>
    <name>skarnel::Application</name>
    <message>
        <source>Only a picture file of this computer can be dropped here.</source>
        <translation>Seul un fichier image de cet ordinateur peut être déposé ici.</translation>
    </message>
    <message>
        <source>The page cannot be opened: %1</source>
        <translation>Impossible d’ouvrir la page : %1</translation>
    </message>
    <message>
        <source>“%1” cannot be read: %2.</source>
        <translation>Impossible de lire « %1 » : %2.</translation>
    </message>
    <message>
        <source>“%1” is no picture that can be opened.</source>
        <translation>« %1 » n’est pas une image que Skarnel peut ouvrir.</translation>
    </message>
    <message>
        <source>“%1” is damaged and cannot be opened.</source>
        <translation>« %1 » est endommagé, impossible de l’ouvrir.</translation>
    </message>
    <message>
        <source>“%1” cannot be opened: %2.</source>
        <translation>Impossible d’ouvrir « %1 » : %2.</translation>
    </message>
    <message>
        <source>The picture waits under Open Recent.</source>
        <translation>L’image attend dans « Ouvrir un fichier récent ».</translation>
    </message>
    <message>
        <source>There is no picture on the clipboard.</source>
        <translation>Le presse-papiers ne contient pas d’image.</translation>
    </message>
    <message>
        <source>Pasted Picture</source>
        <translation>Image collée</translation>
    </message>
    <message>
        <source>The picture cannot be pasted.</source>
        <translation>Impossible de coller l’image.</translation>
    </message>
    <message>
        <source>&amp;Clear Menu</source>
        <translation>&amp;Vider la liste</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>Réinitialisation</translation>
    </message>
    <message>
        <source>About Skarnel</source>
        <translation>À propos de Skarnel</translation>
    </message>
    <message>
        <source>Turns a picture into its reflection.</source>
        <translation>Transforme une image en son reflet.</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>Texte</translation>
    </message>
    <message>
        <source>Saved %1</source>
        <translation>%1 enregistré</translation>
    </message>
    <message>
        <source>Copied</source>
        <translation>Copié</translation>
    </message>
    <message>
        <source>Copied as PNG</source>
        <translation>Copié en PNG</translation>
    </message>
    <message>
        <source>The text cannot be made a picture: %1.</source>
        <translation>Le texte ne peut pas devenir une image : %1.</translation>
    </message>
    <message>
        <source>The text cannot be made a picture.</source>
        <translation>Le texte ne peut pas devenir une image.</translation>
    </message>
    <message>
        <source>Saving “%1” …</source>
        <translation>Enregistrement de « %1 »…</translation>
    </message>
</context>
<context>
    <name>skarnel::Companions</name>
    <message>
        <source>Looks</source>
        <translation>Styles</translation>
    </message>
    <message>
        <source>Show &amp;Looks</source>
        <translation>Afficher les st&amp;yles</translation>
    </message>
    <message>
        <source>Show the looks below the picture</source>
        <translation>Afficher les styles sous l’image</translation>
    </message>
    <message>
        <source>User&apos;s &amp;Guide</source>
        <translation>&amp;Guide de l’utilisateur</translation>
    </message>
    <message>
        <source>Open the guide that came with the program</source>
        <translation>Ouvrir le guide fourni avec le programme</translation>
    </message>
    <message>
        <source>The result cannot be dragged: %1.</source>
        <translation>Impossible de faire glisser le résultat : %1.</translation>
    </message>
    <message>
        <source>Pictu&amp;re Alone</source>
        <translation>&amp;Image seule</translation>
    </message>
    <message>
        <source>Space, held</source>
        <translation>Espace (maintenir)</translation>
    </message>
    <message>
        <source>Show the picture without its reflection</source>
        <translation>Afficher l’image sans son reflet</translation>
    </message>
    <message>
        <source>Save Loo&amp;k…</source>
        <translation>&amp;Enregistrer le style…</translation>
    </message>
    <message>
        <source>Save the settings as a look</source>
        <translation>Enregistrer les réglages comme style</translation>
    </message>
</context>
<context>
    <name>skarnel::CompareOverlay</name>
    <message>
        <source>The picture without its reflection</source>
        <translation>L’image sans son reflet</translation>
    </message>
</context>
<context>
    <name>skarnel::MainActions</name>
    <message>
        <source>&amp;Open…</source>
        <translation>&amp;Ouvrir…</translation>
    </message>
    <message>
        <source>Open a photo</source>
        <translation>Ouvrir une photo</translation>
    </message>
    <message>
        <source>&amp;Save…</source>
        <translation>&amp;Enregistrer…</translation>
    </message>
    <message>
        <source>Save the result</source>
        <translation>Enregistrer le résultat</translation>
    </message>
    <message>
        <source>Save and &amp;Edit…</source>
        <translation>Enregistrer et &amp;modifier…</translation>
    </message>
    <message>
        <source>Save the result and edit</source>
        <translation>Enregistrer le résultat et le modifier</translation>
    </message>
    <message>
        <source>&amp;Close Without Saving</source>
        <translation>&amp;Fermer sans enregistrer</translation>
    </message>
    <message>
        <source>Hide the window; starting the program again shows it</source>
        <translation>Masquer la fenêtre ; relancer le programme la fait réapparaître</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Quitter</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Quitter</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Annuler</translation>
    </message>
    <message>
        <source>Undo the last change of the settings</source>
        <translation>Annuler la dernière modification des réglages</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Rétablir</translation>
    </message>
    <message>
        <source>Redo the change of the settings</source>
        <translation>Rétablir la modification des réglages</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Copier</translation>
    </message>
    <message>
        <source>Copy the result</source>
        <translation>Copier le résultat</translation>
    </message>
    <message>
        <source>Copy as &amp;PNG</source>
        <translation>Copier en &amp;PNG</translation>
    </message>
    <message>
        <source>Copy the result for programs that take no TIFF</source>
        <translation>Copier le résultat pour les programmes qui n’acceptent pas le TIFF</translation>
    </message>
    <message>
        <source>Copy Se&amp;lection</source>
        <translation>Copier la &amp;sélection</translation>
    </message>
    <message>
        <source>Copy the selected part of what is shown</source>
        <translation>Copier la partie sélectionnée de ce qui est affiché</translation>
    </message>
    <message>
        <source>Make the picture on the clipboard the source</source>
        <translation>Prendre comme source l’image du presse-papiers</translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation>&amp;Tout sélectionner</translation>
    </message>
    <message>
        <source>Select the whole picture</source>
        <translation>Sélectionner toute l’image</translation>
    </message>
    <message>
        <source>Re&amp;set Settings</source>
        <translation>Réinitialiser les ré&amp;glages</translation>
    </message>
    <message>
        <source>Return every setting to its default</source>
        <translation>Rétablir la valeur par défaut de chaque réglage</translation>
    </message>
    <message>
        <source>Play a S&amp;ound After Copying</source>
        <translation>&amp;Jouer un son après la copie</translation>
    </message>
    <message>
        <source>Play a sound after copying</source>
        <translation>Jouer un son après la copie</translation>
    </message>
    <message>
        <source>Zoom &amp;Out</source>
        <translation>Zoom a&amp;rrière</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>Zoom arrière</translation>
    </message>
    <message>
        <source>Zoom &amp;In</source>
        <translation>Zoom &amp;avant</translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation>Zoom avant</translation>
    </message>
    <message>
        <source>&amp;Actual Size</source>
        <translation>&amp;Taille réelle</translation>
    </message>
    <message>
        <source>One image pixel on one screen pixel</source>
        <translation>Un pixel d’image par pixel d’écran</translation>
    </message>
    <message>
        <source>&amp;Fit to Window</source>
        <translation>A&amp;juster à la fenêtre</translation>
    </message>
    <message>
        <source>Show the whole picture</source>
        <translation>Afficher toute l’image</translation>
    </message>
    <message>
        <source>&amp;Checkerboard</source>
        <translation>&amp;Damier</translation>
    </message>
    <message>
        <source>Show a checkerboard where the result is transparent</source>
        <translation>Afficher un damier là où le résultat est transparent</translation>
    </message>
    <message>
        <source>Show &amp;Text</source>
        <translation>Afficher le te&amp;xte</translation>
    </message>
    <message>
        <source>Show the text below the picture</source>
        <translation>Afficher le texte sous l’image</translation>
    </message>
    <message>
        <source>F&amp;ull Screen</source>
        <translation>&amp;Plein écran</translation>
    </message>
    <message>
        <source>Full screen</source>
        <translation>Plein écran</translation>
    </message>
    <message>
        <source>As the &amp;System</source>
        <translation>Comme le &amp;système</translation>
    </message>
    <message>
        <source>&amp;Light</source>
        <translation>&amp;Clair</translation>
    </message>
    <message>
        <source>&amp;Dark</source>
        <translation>S&amp;ombre</translation>
    </message>
    <message>
        <source>&amp;Move</source>
        <translation>&amp;Déplacer</translation>
    </message>
    <message>
        <source>Move the picture by dragging</source>
        <translation>Déplacer l’image en la faisant glisser</translation>
    </message>
    <message>
        <source>&amp;Select</source>
        <translation>&amp;Sélectionner</translation>
    </message>
    <message>
        <source>Select a part by dragging</source>
        <translation>Sélectionner une partie en faisant glisser</translation>
    </message>
    <message>
        <source>&amp;Crop</source>
        <translation>&amp;Recadrer</translation>
    </message>
    <message>
        <source>Show only the part that is dragged over; Escape shows all</source>
        <translation>N’afficher que la partie parcourue ; Échap affiche tout</translation>
    </message>
    <message>
        <source>&amp;Rotate</source>
        <translation>&amp;Pivoter</translation>
    </message>
    <message>
        <source>Turn what is shown by dragging; Shift turns in steps</source>
        <translation>Faire tourner l’affichage en faisant glisser ; Maj tourne par paliers</translation>
    </message>
    <message>
        <source>&amp;Annotate</source>
        <translation>&amp;Annoter</translation>
    </message>
    <message>
        <source>Put marks on what is shown</source>
        <translation>Annoter ce qui est affiché</translation>
    </message>
    <message>
        <source>Show the &amp;Whole Picture</source>
        <translation>Afficher l’image &amp;entière</translation>
    </message>
    <message>
        <source>Forget crop, turn, selection and marks</source>
        <translation>Oublier recadrage, rotation, sélection et annotations</translation>
    </message>
    <message>
        <source>&amp;Image Text</source>
        <translation>Convertir le texte en &amp;image</translation>
    </message>
    <message>
        <source>Make the text the picture</source>
        <translation>Faire du texte l’image</translation>
    </message>
    <message>
        <source>&amp;Background Colour…</source>
        <translation>Couleur d’&amp;arrière-plan…</translation>
    </message>
    <message>
        <source>Choose the background colour</source>
        <translation>Choisir la couleur d’arrière-plan</translation>
    </message>
    <message>
        <source>Text &amp;Colour…</source>
        <translation>&amp;Couleur du texte…</translation>
    </message>
    <message>
        <source>Choose the colour of the text</source>
        <translation>Choisir la couleur du texte</translation>
    </message>
    <message>
        <source>Skarnel &amp;Help</source>
        <translation>&amp;Aide de Skarnel</translation>
    </message>
    <message>
        <source>Open the product&apos;s page</source>
        <translation>Ouvrir la page du produit</translation>
    </message>
    <message>
        <source>&amp;About Skarnel</source>
        <translation>À &amp;propos de Skarnel</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Fichier</translation>
    </message>
    <message>
        <source>Open &amp;Recent</source>
        <translation>Ouvrir un fichier &amp;récent</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>É&amp;dition</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Affichage</translation>
    </message>
    <message>
        <source>A&amp;ppearance</source>
        <translation>Appar&amp;ence</translation>
    </message>
    <message>
        <source>&amp;Tools</source>
        <translation>&amp;Outils</translation>
    </message>
    <message>
        <source>Te&amp;xt</source>
        <translation>Te&amp;xte</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>Aid&amp;e</translation>
    </message>
    <message>
        <source>Tools</source>
        <translation>Outils</translation>
    </message>
    <message>
        <source>Zoom</source>
        <translation>Zoom</translation>
    </message>
    <message>
        <source>&amp;Undo %1</source>
        <translation>&amp;Annuler : %1</translation>
    </message>
    <message>
        <source>&amp;Redo %1</source>
        <translation>&amp;Rétablir : %1</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>Pas&amp;te Picture</source>
        <translation>Co&amp;ller l’image</translation>
    </message>
    <message>
        <source>Zoom: %1 %</source>
        <translation>Zoom : %1 %</translation>
    </message>
</context>
<context>
    <name>skarnel::MoreLooks</name>
    <message>
        <source>More looks</source>
        <translation>Autres styles</translation>
    </message>
</context>
<context>
    <name>skarnel::PresetStrip</name>
    <message>
        <source>Mirror</source>
        <translation>Miroir</translation>
    </message>
    <message>
        <source>Subtle Floor</source>
        <translation>Sol discret</translation>
    </message>
    <message>
        <source>Glossy Table</source>
        <translation>Table brillante</translation>
    </message>
    <message>
        <source>Tall Mirror</source>
        <translation>Grand miroir</translation>
    </message>
    <message>
        <source>Still Water</source>
        <translation>Eau calme</translation>
    </message>
    <message>
        <source>Stage</source>
        <translation>Scène</translation>
    </message>
    <message>
        <source>Floating</source>
        <translation>Flottant</translation>
    </message>
    <message>
        <source>Shop Window</source>
        <translation>Vitrine</translation>
    </message>
    <message>
        <source>Card to the Left</source>
        <translation>Carte vers la gauche</translation>
    </message>
    <message>
        <source>Card to the Right</source>
        <translation>Carte vers la droite</translation>
    </message>
    <message>
        <source>Cover</source>
        <translation>Couverture</translation>
    </message>
    <message>
        <source>Twin</source>
        <translation>Jumeau</translation>
    </message>
    <message>
        <source>Looks</source>
        <translation>Styles</translation>
    </message>
    <message>
        <source>Save the settings as a look</source>
        <translation>Enregistrer les réglages comme style</translation>
    </message>
    <message>
        <source>Save as Look</source>
        <translation>Enregistrer comme style</translation>
    </message>
    <message>
        <source>Return uses a look; F2 renames and Delete removes one of your own</source>
        <translation>Entrée applique un style ; F2 renomme et Suppr retire l’un des vôtres</translation>
    </message>
    <message>
        <source>&amp;Save Settings as Look</source>
        <translation>&amp;Enregistrer les réglages comme style</translation>
    </message>
    <message>
        <source>&amp;Rename</source>
        <translation>&amp;Renommer</translation>
    </message>
    <message>
        <source>Re&amp;move</source>
        <translation>Re&amp;tirer</translation>
    </message>
    <message>
        <source>Rename “%1”</source>
        <translation>Renommer « %1 »</translation>
    </message>
    <message>
        <source>Remove “%1”</source>
        <translation>Retirer « %1 »</translation>
    </message>
</context>
<context>
    <name>skarnel::RecipeCommands</name>
    <message>
        <source>Save the settings, the background and the text as a file</source>
        <translation>Enregistrer les réglages, l’arrière-plan et le texte dans un fichier</translation>
    </message>
    <message>
        <source>Use the settings, the background and the text of a recipe</source>
        <translation>Utiliser les réglages, l’arrière-plan et le texte d’une recette</translation>
    </message>
    <message>
        <source>Use the settings of a recipe, or of a picture that carries one</source>
        <translation>Utiliser les réglages d’une recette, ou d’une image qui en contient une</translation>
    </message>
    <message>
        <source>Save Recipe</source>
        <translation>Enregistrer la recette</translation>
    </message>
    <message>
        <source>Recipes (*.skarnel)</source>
        <translation>Recettes (*.skarnel)</translation>
    </message>
    <message>
        <source>Open Recipe</source>
        <translation>Ouvrir une recette</translation>
    </message>
    <message>
        <source>Take Settings From</source>
        <translation>Reprendre les réglages de</translation>
    </message>
    <message>
        <source>Recipes and pictures (*.skarnel *.tif *.tiff *.png *.jpg *.jpeg)</source>
        <translation>Recettes et images (*.skarnel *.tif *.tiff *.png *.jpg *.jpeg)</translation>
    </message>
    <message>
        <source>The recipe cannot be saved: %1.</source>
        <translation>Impossible d’enregistrer la recette : %1.</translation>
    </message>
    <message>
        <source>“%1”: %2.</source>
        <translation>« %1 » : %2.</translation>
    </message>
    <message>
        <source>The text of “%1” cannot be made a picture.</source>
        <translation>Le texte de « %1 » ne peut pas devenir une image.</translation>
    </message>
    <message>
        <source>Recipe</source>
        <translation>Recette</translation>
    </message>
    <message>
        <source>The settings stay as they are while a panel is open.</source>
        <translation>Les réglages restent inchangés tant qu’un dialogue est ouvert.</translation>
    </message>
    <message>
        <source>Taken Settings</source>
        <translation>Réglages repris</translation>
    </message>
    <message>
        <source>Save Reci&amp;pe…</source>
        <translation>Enre&amp;gistrer la recette…</translation>
    </message>
    <message>
        <source>Ope&amp;n Recipe…</source>
        <translation>Ouvrir &amp;une recette…</translation>
    </message>
    <message>
        <source>&amp;Take Settings From…</source>
        <translation>Re&amp;prendre les réglages de…</translation>
    </message>
    <message>
        <source>“%1” was saved without its settings: %2.</source>
        <translation>« %1 » a été enregistré sans les réglages : %2.</translation>
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
        <translation>&amp;Format :</translation>
    </message>
    <message>
        <source>Resolution:</source>
        <translation>Résolution :</translation>
    </message>
    <message>
        <source>&amp;Keep the settings inside the file</source>
        <translation>C&amp;onserver les réglages dans le fichier</translation>
    </message>
    <message>
        <source>“Take Settings From” finds them there; for a picture of text they hold the text</source>
        <translation>« Reprendre les réglages de » les y retrouve ; pour une image de texte, ils contiennent le texte</translation>
    </message>
    <message>
        <source>none, as the source</source>
        <translation>aucune, comme la source</translation>
    </message>
    <message>
        <source>%1 dpi, as the source</source>
        <translation>%1 ppp, comme la source</translation>
    </message>
    <message>
        <source>Compression</source>
        <translation>Compression</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Aucune</translation>
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
        <translation>&amp;Compression :</translation>
    </message>
    <message>
        <source>Fast</source>
        <translation>Rapide</translation>
    </message>
    <message>
        <source>Small</source>
        <translation>Compacte</translation>
    </message>
    <message>
        <source>Quality</source>
        <translation>Qualité</translation>
    </message>
    <message>
        <source>Quality, number</source>
        <translation>Qualité, nombre</translation>
    </message>
    <message>
        <source>&amp;Quality:</source>
        <translation>&amp;Qualité :</translation>
    </message>
</context>
<context>
    <name>skarnel::SettingsPanel</name>
    <message>
        <source>Height</source>
        <translation>Hauteur</translation>
    </message>
    <message>
        <source>Height of the reflection, in percent of the picture&apos;s</source>
        <translation>Hauteur du reflet, en pourcentage de celle de l’image</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>Largeur</translation>
    </message>
    <message>
        <source>Widening of the reflection at its far edge, in percent of the picture&apos;s width on each side</source>
        <translation>Élargissement du reflet à son bord éloigné, en pourcentage de la largeur de l’image de chaque côté</translation>
    </message>
    <message>
        <source>Gap</source>
        <translation>Écart</translation>
    </message>
    <message>
        <source>Gap between picture and reflection, in percent of the reflection&apos;s height</source>
        <translation>Écart entre l’image et le reflet, en pourcentage de la hauteur du reflet</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>Début</translation>
    </message>
    <message>
        <source>Lift of the fade, in percent of the reflection&apos;s height</source>
        <translation>Relèvement du fondu, en pourcentage de la hauteur du reflet</translation>
    </message>
    <message>
        <source>Gradient</source>
        <translation>Dégradé</translation>
    </message>
    <message>
        <source>Steepness of the fade, in tenths of its exponent</source>
        <translation>Raideur du fondu, en dixièmes de son exposant</translation>
    </message>
    <message>
        <source>Opacity</source>
        <translation>Opacité</translation>
    </message>
    <message>
        <source>Peak opacity of the reflection; above 255 bright parts turn dark</source>
        <translation>Opacité maximale du reflet ; au-delà de 255, les parties claires deviennent sombres</translation>
    </message>
    <message>
        <source>Turn</source>
        <translation>Rotation</translation>
    </message>
    <message>
        <source>Turn of the whole picture in perspective: level at 0, 50 and 100, strongest at 25 and 75</source>
        <translation>Rotation de l’ensemble en perspective : nulle à 0, 50 et 100, maximale à 25 et 75</translation>
    </message>
    <message>
        <source>&amp;Reset</source>
        <translation>&amp;Réinitialiser</translation>
    </message>
    <message>
        <source>Return every setting to its default</source>
        <translation>Rétablir la valeur par défaut de chaque réglage</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Réglages</translation>
    </message>
    <message>
        <source>Reflection</source>
        <translation>Reflet</translation>
    </message>
    <message>
        <source>Fade</source>
        <translation>Fondu</translation>
    </message>
    <message>
        <source>Perspective</source>
        <translation>Perspective</translation>
    </message>
    <message>
        <source>%1, number</source>
        <translation>%1, nombre</translation>
    </message>
    <message>
        <source>Background</source>
        <translation>Arrière-plan</translation>
    </message>
    <message>
        <source>Background colour</source>
        <translation>Couleur d’arrière-plan</translation>
    </message>
    <message>
        <source>Choose the colour behind the picture</source>
        <translation>Choisir la couleur derrière l’image</translation>
    </message>
    <message>
        <source>Background colour as #RRGGBB</source>
        <translation>Couleur d’arrière-plan au format #RRGGBB</translation>
    </message>
    <message>
        <source>The background colour as #RRGGBB</source>
        <translation>La couleur d’arrière-plan au format #RRGGBB</translation>
    </message>
    <message>
        <source>Lay the background colour under the result, so that it is saved too</source>
        <translation>Placer la couleur d’arrière-plan sous le résultat, afin qu’elle soit enregistrée aussi</translation>
    </message>
    <message>
        <source>Fill with Background</source>
        <translation>Remplir avec l’arrière-plan</translation>
    </message>
    <message>
        <source>Fi&amp;ll the result with it</source>
        <translation>Remp&amp;lir le résultat avec</translation>
    </message>
</context>
<context>
    <name>skarnel::TextBar</name>
    <message>
        <source>&amp;Image Text</source>
        <translation>Convertir en &amp;image</translation>
    </message>
    <message>
        <source>Make the text the picture</source>
        <translation>Faire du texte l’image</translation>
    </message>
    <message>
        <source>Typeface</source>
        <translation>Police</translation>
    </message>
    <message>
        <source>Text size</source>
        <translation>Taille du texte</translation>
    </message>
    <message>
        <source>Bo&amp;ld</source>
        <translation>&amp;Gras</translation>
    </message>
    <message>
        <source>Bold</source>
        <translation>Gras</translation>
    </message>
    <message>
        <source>I&amp;talic</source>
        <translation>I&amp;talique</translation>
    </message>
    <message>
        <source>Italic</source>
        <translation>Italique</translation>
    </message>
    <message>
        <source>&amp;Underline</source>
        <translation>&amp;Souligné</translation>
    </message>
    <message>
        <source>Underline</source>
        <translation>Souligné</translation>
    </message>
    <message>
        <source>Text colour</source>
        <translation>Couleur du texte</translation>
    </message>
    <message>
        <source>Align L&amp;eft</source>
        <translation>Aligner à gauc&amp;he</translation>
    </message>
    <message>
        <source>Align left</source>
        <translation>Aligner à gauche</translation>
    </message>
    <message>
        <source>Ce&amp;ntre</source>
        <translation>C&amp;entrer</translation>
    </message>
    <message>
        <source>Centre</source>
        <translation>Centrer</translation>
    </message>
    <message>
        <source>Align &amp;Right</source>
        <translation>Aligner à &amp;droite</translation>
    </message>
    <message>
        <source>Align right</source>
        <translation>Aligner à droite</translation>
    </message>
</context>
<context>
    <name>skarnel::TextEditor</name>
    <message>
        <source>Text to image</source>
        <translation>Texte à convertir en image</translation>
    </message>
    <message>
        <source>Type and style text here; Image Text makes it the picture</source>
        <translation>Saisir et mettre en forme le texte ici ; « Convertir en image » en fait l’image</translation>
    </message>
</context>
<context>
    <name>skarnel::UserPresets</name>
    <message>
        <source>My Look</source>
        <translation>Mon style</translation>
    </message>
</context>
<context>
    <name>skarnel::Viewer</name>
    <message>
        <source>Picture</source>
        <translation>Image</translation>
    </message>
    <message>
        <source>Text on the picture</source>
        <translation>Texte sur l’image</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>Texte</translation>
    </message>
    <message>
        <source>The picture with its reflection, as it would be saved; Space shows the picture alone</source>
        <translation>L’image avec son reflet, telle qu’elle serait enregistrée ; Espace montre l’image seule</translation>
    </message>
</context>
<context>
    <name>skarnel::ViewerScrollBars</name>
    <message>
        <source>Picture, sideways</source>
        <translation>Image, horizontalement</translation>
    </message>
    <message>
        <source>Picture, up and down</source>
        <translation>Image, verticalement</translation>
    </message>
</context>
</TS>

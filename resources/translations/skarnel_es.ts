<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es">
<context>
    <name>AccessibleView</name>
    <message>
        <source>%1 by %2 pixels, zoom %3 %</source>
        <translation>%1 por %2 píxeles, zoom %3 %</translation>
    </message>
    <message>
        <source>cropped to %1 by %2 at %3, %4</source>
        <translation>recortada a %1 por %2 en %3, %4</translation>
    </message>
    <message>
        <source>turned by %1°</source>
        <translation>girada %1°</translation>
    </message>
    <message>
        <source>selected %1 by %2 at %3, %4</source>
        <translation>selección: %1 por %2 en %3, %4</translation>
    </message>
    <message>
        <source>marks: %1, the last from %2, %3 to %4, %5</source>
        <translation>marcas: %1, la última de %2, %3 a %4, %5</translation>
    </message>
    <message>
        <source>Return begins a selection; arrow keys move it, with Shift they change its size, with Ctrl they go further; Escape takes it away</source>
        <translation>Intro inicia una selección; las flechas la mueven, con Mayús cambian su tamaño y con Ctrl avanzan más; Esc la quita</translation>
    </message>
    <message>
        <source>Return begins a frame; arrow keys move it, with Shift they change its size, with Ctrl they go further; Return crops, Escape gives up</source>
        <translation>Intro inicia un marco; las flechas lo mueven, con Mayús cambian su tamaño y con Ctrl avanzan más; Intro recorta, Esc lo abandona</translation>
    </message>
    <message>
        <source>Left and right arrow keys turn the picture, with Shift in steps; Escape turns it back</source>
        <translation>Las flechas izquierda y derecha giran la imagen, con Mayús por pasos; Esc deshace el giro</translation>
    </message>
    <message>
        <source>Return puts a mark in the middle; arrow keys move it, with Shift they change its size, with Ctrl they go further; Return keeps it, Escape takes it away</source>
        <translation>Intro pone una marca en el centro; las flechas la mueven, con Mayús cambian su tamaño y con Ctrl avanzan más; Intro la conserva, Esc la quita</translation>
    </message>
    <message>
        <source>%1, opacity %2 %</source>
        <translation>%1, opacidad %2 %</translation>
    </message>
</context>
<context>
    <name>ColorPanel</name>
    <message>
        <source>Colours</source>
        <translation>Colores</translation>
    </message>
</context>
<context>
    <name>OpenPanel</name>
    <message>
        <source>Pictures</source>
        <translation>Imágenes</translation>
    </message>
</context>
<context>
    <name>SavePanel</name>
    <message>
        <source>Save Result</source>
        <translation>Guardar el resultado</translation>
    </message>
    <message>
        <source>Save in:</source>
        <translation>Guardar en:</translation>
    </message>
</context>
<context>
    <name>skarnel::AnnotateBar</name>
    <message>
        <source>Red</source>
        <translation>Rojo</translation>
    </message>
    <message>
        <source>Yellow</source>
        <translation>Amarillo</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Azul</translation>
    </message>
    <message>
        <source>White</source>
        <translation>Blanco</translation>
    </message>
    <message>
        <source>Ellipse</source>
        <translation>Elipse</translation>
    </message>
    <message>
        <source>Arrow</source>
        <translation>Flecha</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>Texto</translation>
    </message>
    <message>
        <source>Remove all marks</source>
        <translation>Quitar todas las marcas</translation>
    </message>
</context>
<context>
    <name>skarnel::Application</name>
    <message>
        <source>Only a picture file of this computer can be dropped here.</source>
        <translation>Aquí solo se puede soltar un archivo de imagen de este equipo.</translation>
    </message>
    <message>
        <source>The page cannot be opened: %1</source>
        <translation>No se puede abrir la página: %1</translation>
    </message>
    <message>
        <source>“%1” cannot be read: %2.</source>
        <translation>No se puede leer «%1»: %2.</translation>
    </message>
    <message>
        <source>“%1” is no picture that can be opened.</source>
        <translation>«%1» no es una imagen que se pueda abrir.</translation>
    </message>
    <message>
        <source>“%1” is damaged and cannot be opened.</source>
        <translation>«%1» está dañado y no se puede abrir.</translation>
    </message>
    <message>
        <source>“%1” cannot be opened: %2.</source>
        <translation>No se puede abrir «%1»: %2.</translation>
    </message>
    <message>
        <source>The picture waits under Open Recent.</source>
        <translation>La imagen espera en «Abrir reciente».</translation>
    </message>
    <message>
        <source>There is no picture on the clipboard.</source>
        <translation>No hay ninguna imagen en el portapapeles.</translation>
    </message>
    <message>
        <source>Pasted Picture</source>
        <translation>Imagen pegada</translation>
    </message>
    <message>
        <source>The picture cannot be pasted.</source>
        <translation>No se puede pegar la imagen.</translation>
    </message>
    <message>
        <source>&amp;Clear Menu</source>
        <translation>&amp;Vaciar la lista</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>Restablecer</translation>
    </message>
    <message>
        <source>About Skarnel</source>
        <translation>Acerca de Skarnel</translation>
    </message>
    <message>
        <source>Turns a picture into its reflection.</source>
        <translation>Convierte una imagen en su reflejo.</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>Texto</translation>
    </message>
    <message>
        <source>Saved %1</source>
        <translation>%1 guardado</translation>
    </message>
    <message>
        <source>Copied</source>
        <translation>Copiado</translation>
    </message>
    <message>
        <source>Copied as PNG</source>
        <translation>Copiado como PNG</translation>
    </message>
    <message>
        <source>The text cannot be made a picture: %1.</source>
        <translation>No se puede hacer una imagen del texto: %1.</translation>
    </message>
    <message>
        <source>The text cannot be made a picture.</source>
        <translation>No se puede hacer una imagen del texto.</translation>
    </message>
    <message>
        <source>Saving “%1” …</source>
        <translation>Guardando «%1»…</translation>
    </message>
</context>
<context>
    <name>skarnel::Companions</name>
    <message>
        <source>Looks</source>
        <translation>Estilos</translation>
    </message>
    <message>
        <source>Show &amp;Looks</source>
        <translation>Mostrar &amp;estilos</translation>
    </message>
    <message>
        <source>Show the looks below the picture</source>
        <translation>Mostrar los estilos bajo la imagen</translation>
    </message>
    <message>
        <source>User&apos;s &amp;Guide</source>
        <translation>&amp;Guía del usuario</translation>
    </message>
    <message>
        <source>Open the guide that came with the program</source>
        <translation>Abrir la guía incluida con el programa</translation>
    </message>
    <message>
        <source>The result cannot be dragged: %1.</source>
        <translation>No se puede arrastrar el resultado: %1.</translation>
    </message>
    <message>
        <source>Pictu&amp;re Alone</source>
        <translation>&amp;Imagen sin reflejo</translation>
    </message>
    <message>
        <source>Space, held</source>
        <translation>Espacio (mantener)</translation>
    </message>
    <message>
        <source>Show the picture without its reflection</source>
        <translation>Mostrar la imagen sin su reflejo</translation>
    </message>
    <message>
        <source>Save Loo&amp;k…</source>
        <translation>Guardar est&amp;ilo…</translation>
    </message>
    <message>
        <source>Save the settings as a look</source>
        <translation>Guardar los ajustes como estilo</translation>
    </message>
</context>
<context>
    <name>skarnel::CompareOverlay</name>
    <message>
        <source>The picture without its reflection</source>
        <translation>La imagen sin su reflejo</translation>
    </message>
</context>
<context>
    <name>skarnel::MainActions</name>
    <message>
        <source>&amp;Open…</source>
        <translation>&amp;Abrir…</translation>
    </message>
    <message>
        <source>Open a photo</source>
        <translation>Abrir una foto</translation>
    </message>
    <message>
        <source>&amp;Save…</source>
        <translation>&amp;Guardar…</translation>
    </message>
    <message>
        <source>Save the result</source>
        <translation>Guardar el resultado</translation>
    </message>
    <message>
        <source>Save and &amp;Edit…</source>
        <translation>Guardar y &amp;editar…</translation>
    </message>
    <message>
        <source>Save the result and edit</source>
        <translation>Guardar el resultado y editarlo</translation>
    </message>
    <message>
        <source>&amp;Close Without Saving</source>
        <translation>Cerrar &amp;sin guardar</translation>
    </message>
    <message>
        <source>Hide the window; starting the program again shows it</source>
        <translation>Ocultar la ventana; al iniciar de nuevo el programa vuelve a mostrarse</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>Sa&amp;lir</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Salir</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Deshacer</translation>
    </message>
    <message>
        <source>Undo the last change of the settings</source>
        <translation>Deshacer el último cambio de los ajustes</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Rehacer</translation>
    </message>
    <message>
        <source>Redo the change of the settings</source>
        <translation>Rehacer el cambio de los ajustes</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Copiar</translation>
    </message>
    <message>
        <source>Copy the result</source>
        <translation>Copiar el resultado</translation>
    </message>
    <message>
        <source>Copy as &amp;PNG</source>
        <translation>Copiar como &amp;PNG</translation>
    </message>
    <message>
        <source>Copy the result for programs that take no TIFF</source>
        <translation>Copiar el resultado para programas que no aceptan TIFF</translation>
    </message>
    <message>
        <source>Copy Se&amp;lection</source>
        <translation>Copiar &amp;selección</translation>
    </message>
    <message>
        <source>Copy the selected part of what is shown</source>
        <translation>Copiar la parte seleccionada de lo que se muestra</translation>
    </message>
    <message>
        <source>Make the picture on the clipboard the source</source>
        <translation>Usar como origen la imagen del portapapeles</translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation>Seleccionar &amp;todo</translation>
    </message>
    <message>
        <source>Select the whole picture</source>
        <translation>Seleccionar toda la imagen</translation>
    </message>
    <message>
        <source>Re&amp;set Settings</source>
        <translation>Restablecer los &amp;ajustes</translation>
    </message>
    <message>
        <source>Return every setting to its default</source>
        <translation>Devolver todos los ajustes a su valor predeterminado</translation>
    </message>
    <message>
        <source>Play a S&amp;ound After Copying</source>
        <translation>Reproducir un s&amp;onido al copiar</translation>
    </message>
    <message>
        <source>Play a sound after copying</source>
        <translation>Reproducir un sonido después de copiar</translation>
    </message>
    <message>
        <source>Zoom &amp;Out</source>
        <translation>A&amp;lejar</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>Alejar</translation>
    </message>
    <message>
        <source>Zoom &amp;In</source>
        <translation>A&amp;cercar</translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation>Acercar</translation>
    </message>
    <message>
        <source>&amp;Actual Size</source>
        <translation>Tamaño &amp;real</translation>
    </message>
    <message>
        <source>One image pixel on one screen pixel</source>
        <translation>Un píxel de imagen por píxel de pantalla</translation>
    </message>
    <message>
        <source>&amp;Fit to Window</source>
        <translation>Ajustar a la &amp;ventana</translation>
    </message>
    <message>
        <source>Show the whole picture</source>
        <translation>Mostrar toda la imagen</translation>
    </message>
    <message>
        <source>&amp;Checkerboard</source>
        <translation>Fondo a c&amp;uadros</translation>
    </message>
    <message>
        <source>Show a checkerboard where the result is transparent</source>
        <translation>Mostrar cuadros donde el resultado es transparente</translation>
    </message>
    <message>
        <source>Show &amp;Text</source>
        <translation>Mostrar &amp;texto</translation>
    </message>
    <message>
        <source>Show the text below the picture</source>
        <translation>Mostrar el texto bajo la imagen</translation>
    </message>
    <message>
        <source>F&amp;ull Screen</source>
        <translation>Pantalla c&amp;ompleta</translation>
    </message>
    <message>
        <source>Full screen</source>
        <translation>Pantalla completa</translation>
    </message>
    <message>
        <source>As the &amp;System</source>
        <translation>Como el &amp;sistema</translation>
    </message>
    <message>
        <source>&amp;Light</source>
        <translation>&amp;Claro</translation>
    </message>
    <message>
        <source>&amp;Dark</source>
        <translation>&amp;Oscuro</translation>
    </message>
    <message>
        <source>&amp;Move</source>
        <translation>&amp;Mover</translation>
    </message>
    <message>
        <source>Move the picture by dragging</source>
        <translation>Mover la imagen arrastrándola</translation>
    </message>
    <message>
        <source>&amp;Select</source>
        <translation>&amp;Seleccionar</translation>
    </message>
    <message>
        <source>Select a part by dragging</source>
        <translation>Seleccionar una parte arrastrando</translation>
    </message>
    <message>
        <source>&amp;Crop</source>
        <translation>&amp;Recortar</translation>
    </message>
    <message>
        <source>Show only the part that is dragged over; Escape shows all</source>
        <translation>Mostrar solo la parte marcada al arrastrar; Esc muestra todo</translation>
    </message>
    <message>
        <source>&amp;Rotate</source>
        <translation>&amp;Girar</translation>
    </message>
    <message>
        <source>Turn what is shown by dragging; Shift turns in steps</source>
        <translation>Girar lo que se muestra arrastrando; con Mayús, por pasos</translation>
    </message>
    <message>
        <source>&amp;Annotate</source>
        <translation>&amp;Anotar</translation>
    </message>
    <message>
        <source>Put marks on what is shown</source>
        <translation>Poner marcas sobre lo que se muestra</translation>
    </message>
    <message>
        <source>Show the &amp;Whole Picture</source>
        <translation>Mostrar la imagen &amp;entera</translation>
    </message>
    <message>
        <source>Forget crop, turn, selection and marks</source>
        <translation>Olvidar recorte, giro, selección y marcas</translation>
    </message>
    <message>
        <source>&amp;Image Text</source>
        <translation>Convertir texto en &amp;imagen</translation>
    </message>
    <message>
        <source>Make the text the picture</source>
        <translation>Usar el texto como imagen</translation>
    </message>
    <message>
        <source>&amp;Background Colour…</source>
        <translation>Color de &amp;fondo…</translation>
    </message>
    <message>
        <source>Choose the background colour</source>
        <translation>Elegir el color de fondo</translation>
    </message>
    <message>
        <source>Text &amp;Colour…</source>
        <translation>Color del &amp;texto…</translation>
    </message>
    <message>
        <source>Choose the colour of the text</source>
        <translation>Elegir el color del texto</translation>
    </message>
    <message>
        <source>Skarnel &amp;Help</source>
        <translation>&amp;Ayuda de Skarnel</translation>
    </message>
    <message>
        <source>Open the product&apos;s page</source>
        <translation>Abrir la página del producto</translation>
    </message>
    <message>
        <source>&amp;About Skarnel</source>
        <translation>Acerca &amp;de Skarnel</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Archivo</translation>
    </message>
    <message>
        <source>Open &amp;Recent</source>
        <translation>Abrir &amp;reciente</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Edición</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ver</translation>
    </message>
    <message>
        <source>A&amp;ppearance</source>
        <translation>A&amp;pariencia</translation>
    </message>
    <message>
        <source>&amp;Tools</source>
        <translation>&amp;Herramientas</translation>
    </message>
    <message>
        <source>Te&amp;xt</source>
        <translation>Te&amp;xto</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>A&amp;yuda</translation>
    </message>
    <message>
        <source>Tools</source>
        <translation>Herramientas</translation>
    </message>
    <message>
        <source>Zoom</source>
        <translation>Zoom</translation>
    </message>
    <message>
        <source>&amp;Undo %1</source>
        <translation>&amp;Deshacer: %1</translation>
    </message>
    <message>
        <source>&amp;Redo %1</source>
        <translation>&amp;Rehacer: %1</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>Pas&amp;te Picture</source>
        <translation>Pe&amp;gar imagen</translation>
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
        <translation>Más estilos</translation>
    </message>
</context>
<context>
    <name>skarnel::PresetStrip</name>
    <message>
        <source>Mirror</source>
        <translation>Espejo</translation>
    </message>
    <message>
        <source>Subtle Floor</source>
        <translation>Suelo sutil</translation>
    </message>
    <message>
        <source>Glossy Table</source>
        <translation>Mesa brillante</translation>
    </message>
    <message>
        <source>Tall Mirror</source>
        <translation>Espejo alto</translation>
    </message>
    <message>
        <source>Still Water</source>
        <translation>Aguas tranquilas</translation>
    </message>
    <message>
        <source>Stage</source>
        <translation>Escenario</translation>
    </message>
    <message>
        <source>Floating</source>
        <translation>Flotante</translation>
    </message>
    <message>
        <source>Shop Window</source>
        <translation>Escaparate</translation>
    </message>
    <message>
        <source>Card to the Left</source>
        <translation>Tarjeta a la izquierda</translation>
    </message>
    <message>
        <source>Card to the Right</source>
        <translation>Tarjeta a la derecha</translation>
    </message>
    <message>
        <source>Cover</source>
        <translation>Portada</translation>
    </message>
    <message>
        <source>Twin</source>
        <translation>Gemelo</translation>
    </message>
    <message>
        <source>Looks</source>
        <translation>Estilos</translation>
    </message>
    <message>
        <source>Save the settings as a look</source>
        <translation>Guardar los ajustes como estilo</translation>
    </message>
    <message>
        <source>Save as Look</source>
        <translation>Guardar como estilo</translation>
    </message>
    <message>
        <source>Return uses a look; F2 renames and Delete removes one of your own</source>
        <translation>Intro aplica un estilo; F2 cambia el nombre de uno propio y Supr lo quita</translation>
    </message>
    <message>
        <source>&amp;Save Settings as Look</source>
        <translation>&amp;Guardar los ajustes como estilo</translation>
    </message>
    <message>
        <source>&amp;Rename</source>
        <translation>Cambiar &amp;nombre</translation>
    </message>
    <message>
        <source>Re&amp;move</source>
        <translation>&amp;Quitar</translation>
    </message>
    <message>
        <source>Rename “%1”</source>
        <translation>Cambiar el nombre de «%1»</translation>
    </message>
    <message>
        <source>Remove “%1”</source>
        <translation>Quitar «%1»</translation>
    </message>
</context>
<context>
    <name>skarnel::RecipeCommands</name>
    <message>
        <source>Save the settings, the background and the text as a file</source>
        <translation>Guardar los ajustes, el fondo y el texto en un archivo</translation>
    </message>
    <message>
        <source>Use the settings, the background and the text of a recipe</source>
        <translation>Usar los ajustes, el fondo y el texto de una receta</translation>
    </message>
    <message>
        <source>Use the settings of a recipe, or of a picture that carries one</source>
        <translation>Usar los ajustes de una receta o de una imagen que contenga una</translation>
    </message>
    <message>
        <source>Save Recipe</source>
        <translation>Guardar receta</translation>
    </message>
    <message>
        <source>Recipes (*.skarnel)</source>
        <translation>Recetas (*.skarnel)</translation>
    </message>
    <message>
        <source>Open Recipe</source>
        <translation>Abrir receta</translation>
    </message>
    <message>
        <source>Take Settings From</source>
        <translation>Tomar ajustes de</translation>
    </message>
    <message>
        <source>Recipes and pictures (*.skarnel *.tif *.tiff *.png *.jpg *.jpeg)</source>
        <translation>Recetas e imágenes (*.skarnel *.tif *.tiff *.png *.jpg *.jpeg)</translation>
    </message>
    <message>
        <source>The recipe cannot be saved: %1.</source>
        <translation>No se puede guardar la receta: %1.</translation>
    </message>
    <message>
        <source>“%1”: %2.</source>
        <translation>«%1»: %2.</translation>
    </message>
    <message>
        <source>The text of “%1” cannot be made a picture.</source>
        <translation>Con el texto de «%1» no se puede hacer una imagen.</translation>
    </message>
    <message>
        <source>Recipe</source>
        <translation>Receta</translation>
    </message>
    <message>
        <source>The settings stay as they are while a panel is open.</source>
        <translation>Los ajustes no cambian mientras haya un diálogo abierto.</translation>
    </message>
    <message>
        <source>Taken Settings</source>
        <translation>Ajustes tomados</translation>
    </message>
    <message>
        <source>Save Reci&amp;pe…</source>
        <translation>Guardar re&amp;ceta…</translation>
    </message>
    <message>
        <source>Ope&amp;n Recipe…</source>
        <translation>A&amp;brir receta…</translation>
    </message>
    <message>
        <source>&amp;Take Settings From…</source>
        <translation>&amp;Tomar ajustes de…</translation>
    </message>
    <message>
        <source>“%1” was saved without its settings: %2.</source>
        <translation>«%1» se ha guardado sin los ajustes: %2.</translation>
    </message>
</context>
<context>
    <name>skarnel::SaveOptionsView</name>
    <message>
        <source>Format</source>
        <translation>Formato</translation>
    </message>
    <message>
        <source>&amp;Format:</source>
        <translation>&amp;Formato:</translation>
    </message>
    <message>
        <source>Resolution:</source>
        <translation>Resolución:</translation>
    </message>
    <message>
        <source>&amp;Keep the settings inside the file</source>
        <translation>&amp;Conservar los ajustes dentro del archivo</translation>
    </message>
    <message>
        <source>“Take Settings From” finds them there; for a picture of text they hold the text</source>
        <translation>«Tomar ajustes de» los encuentra allí; en una imagen de texto incluyen el texto</translation>
    </message>
    <message>
        <source>none, as the source</source>
        <translation>ninguna, como el origen</translation>
    </message>
    <message>
        <source>%1 dpi, as the source</source>
        <translation>%1 ppp, como el origen</translation>
    </message>
    <message>
        <source>Compression</source>
        <translation>Compresión</translation>
    </message>
    <message>
        <source>None</source>
        <translation>Ninguna</translation>
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
        <translation>C&amp;ompresión:</translation>
    </message>
    <message>
        <source>Fast</source>
        <translation>Rápida</translation>
    </message>
    <message>
        <source>Small</source>
        <translation>Pequeña</translation>
    </message>
    <message>
        <source>Quality</source>
        <translation>Calidad</translation>
    </message>
    <message>
        <source>Quality, number</source>
        <translation>Calidad, número</translation>
    </message>
    <message>
        <source>&amp;Quality:</source>
        <translation>Ca&amp;lidad:</translation>
    </message>
</context>
<context>
    <name>skarnel::SettingsPanel</name>
    <message>
        <source>Height</source>
        <translation>Altura</translation>
    </message>
    <message>
        <source>Height of the reflection, in percent of the picture&apos;s</source>
        <translation>Altura del reflejo, en porcentaje de la de la imagen</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>Anchura</translation>
    </message>
    <message>
        <source>Widening of the reflection at its far edge, in percent of the picture&apos;s width on each side</source>
        <translation>Ensanchamiento del reflejo en su borde lejano, en porcentaje de la anchura de la imagen a cada lado</translation>
    </message>
    <message>
        <source>Gap</source>
        <translation>Separación</translation>
    </message>
    <message>
        <source>Gap between picture and reflection, in percent of the reflection&apos;s height</source>
        <translation>Separación entre la imagen y el reflejo, en porcentaje de la altura del reflejo</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>Inicio</translation>
    </message>
    <message>
        <source>Lift of the fade, in percent of the reflection&apos;s height</source>
        <translation>Elevación del desvanecimiento, en porcentaje de la altura del reflejo</translation>
    </message>
    <message>
        <source>Gradient</source>
        <translation>Gradiente</translation>
    </message>
    <message>
        <source>Steepness of the fade, in tenths of its exponent</source>
        <translation>Pendiente del desvanecimiento, en décimas de su exponente</translation>
    </message>
    <message>
        <source>Opacity</source>
        <translation>Opacidad</translation>
    </message>
    <message>
        <source>Peak opacity of the reflection; above 255 bright parts turn dark</source>
        <translation>Opacidad máxima del reflejo; por encima de 255 las partes claras se oscurecen</translation>
    </message>
    <message>
        <source>Turn</source>
        <translation>Giro</translation>
    </message>
    <message>
        <source>Turn of the whole picture in perspective: level at 0, 50 and 100, strongest at 25 and 75</source>
        <translation>Giro de todo el conjunto en perspectiva: nulo en 0, 50 y 100, máximo en 25 y 75</translation>
    </message>
    <message>
        <source>&amp;Reset</source>
        <translation>&amp;Restablecer</translation>
    </message>
    <message>
        <source>Return every setting to its default</source>
        <translation>Devolver todos los ajustes a su valor predeterminado</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>Ajustes</translation>
    </message>
    <message>
        <source>Reflection</source>
        <translation>Reflejo</translation>
    </message>
    <message>
        <source>Fade</source>
        <translation>Desvanecimiento</translation>
    </message>
    <message>
        <source>Perspective</source>
        <translation>Perspectiva</translation>
    </message>
    <message>
        <source>%1, number</source>
        <translation>%1, número</translation>
    </message>
    <message>
        <source>Background</source>
        <translation>Fondo</translation>
    </message>
    <message>
        <source>Background colour</source>
        <translation>Color de fondo</translation>
    </message>
    <message>
        <source>Choose the colour behind the picture</source>
        <translation>Elegir el color que hay detrás de la imagen</translation>
    </message>
    <message>
        <source>Background colour as #RRGGBB</source>
        <translation>Color de fondo como #RRGGBB</translation>
    </message>
    <message>
        <source>The background colour as #RRGGBB</source>
        <translation>El color de fondo como #RRGGBB</translation>
    </message>
    <message>
        <source>Lay the background colour under the result, so that it is saved too</source>
        <translation>Poner el color de fondo bajo el resultado, de modo que también se guarde</translation>
    </message>
    <message>
        <source>Fill with Background</source>
        <translation>Rellenar con el fondo</translation>
    </message>
    <message>
        <source>Fi&amp;ll the result with it</source>
        <translation>Re&amp;llenar el resultado con él</translation>
    </message>
</context>
<context>
    <name>skarnel::TextBar</name>
    <message>
        <source>&amp;Image Text</source>
        <translation>Convertir en &amp;imagen</translation>
    </message>
    <message>
        <source>Make the text the picture</source>
        <translation>Usar el texto como imagen</translation>
    </message>
    <message>
        <source>Typeface</source>
        <translation>Tipo de letra</translation>
    </message>
    <message>
        <source>Text size</source>
        <translation>Tamaño del texto</translation>
    </message>
    <message>
        <source>Bo&amp;ld</source>
        <translation>&amp;Negrita</translation>
    </message>
    <message>
        <source>Bold</source>
        <translation>Negrita</translation>
    </message>
    <message>
        <source>I&amp;talic</source>
        <translation>&amp;Cursiva</translation>
    </message>
    <message>
        <source>Italic</source>
        <translation>Cursiva</translation>
    </message>
    <message>
        <source>&amp;Underline</source>
        <translation>&amp;Subrayado</translation>
    </message>
    <message>
        <source>Underline</source>
        <translation>Subrayado</translation>
    </message>
    <message>
        <source>Text colour</source>
        <translation>Color del texto</translation>
    </message>
    <message>
        <source>Align L&amp;eft</source>
        <translation>Alinear a la i&amp;zquierda</translation>
    </message>
    <message>
        <source>Align left</source>
        <translation>Alinear a la izquierda</translation>
    </message>
    <message>
        <source>Ce&amp;ntre</source>
        <translation>C&amp;entrar</translation>
    </message>
    <message>
        <source>Centre</source>
        <translation>Centrar</translation>
    </message>
    <message>
        <source>Align &amp;Right</source>
        <translation>Alinear a la &amp;derecha</translation>
    </message>
    <message>
        <source>Align right</source>
        <translation>Alinear a la derecha</translation>
    </message>
</context>
<context>
    <name>skarnel::TextEditor</name>
    <message>
        <source>Text to image</source>
        <translation>Texto que se convertirá en imagen</translation>
    </message>
    <message>
        <source>Type and style text here; Image Text makes it the picture</source>
        <translation>Escriba y dé formato al texto aquí; «Convertir en imagen» lo convierte en la imagen</translation>
    </message>
</context>
<context>
    <name>skarnel::UserPresets</name>
    <message>
        <source>My Look</source>
        <translation>Mi estilo</translation>
    </message>
</context>
<context>
    <name>skarnel::Viewer</name>
    <message>
        <source>Picture</source>
        <translation>Imagen</translation>
    </message>
    <message>
        <source>Text on the picture</source>
        <translation>Texto sobre la imagen</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>Texto</translation>
    </message>
    <message>
        <source>The picture with its reflection, as it would be saved; Space shows the picture alone</source>
        <translation>La imagen con su reflejo, tal como se guardaría; la barra espaciadora muestra solo la imagen</translation>
    </message>
</context>
<context>
    <name>skarnel::ViewerScrollBars</name>
    <message>
        <source>Picture, sideways</source>
        <translation>Imagen, en horizontal</translation>
    </message>
    <message>
        <source>Picture, up and down</source>
        <translation>Imagen, en vertical</translation>
    </message>
</context>
</TS>

<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja">
<context>
    <name>AccessibleView</name>
    <message>
        <source>%1 by %2 pixels, zoom %3 %</source>
        <translation>%1 × %2 ピクセル、表示倍率 %3%</translation>
    </message>
    <message>
        <source>cropped to %1 by %2 at %3, %4</source>
        <translation>%3, %4 の %1×%2 に切り抜き</translation>
    </message>
    <message>
        <source>turned by %1°</source>
        <translation>%1° 回転</translation>
    </message>
    <message>
        <source>selected %1 by %2 at %3, %4</source>
        <translation>%3, %4 の %1×%2 を選択</translation>
    </message>
    <message>
        <source>marks: %1, the last from %2, %3 to %4, %5</source>
        <translation>注釈: %1 個、最後は %2, %3 から %4, %5</translation>
    </message>
    <message>
        <source>Return begins a selection; arrow keys move it, with Shift they change its size, with Ctrl they go further; Escape takes it away</source>
        <translation>Enter で選択範囲を作り、矢印キーで移動、Shift で大きさを変更、Ctrl で大きく動かし、Esc で解除します</translation>
    </message>
    <message>
        <source>Return begins a frame; arrow keys move it, with Shift they change its size, with Ctrl they go further; Return crops, Escape gives up</source>
        <translation>Enter で枠を作り、矢印キーで移動、Shift で大きさを変更、Ctrl で大きく動かし、Enter で切り抜き、Esc で中止します</translation>
    </message>
    <message>
        <source>Left and right arrow keys turn the picture, with Shift in steps; Escape turns it back</source>
        <translation>左右の矢印キーで画像を回転、Shift で段階的に回転し、Esc で元に戻します</translation>
    </message>
    <message>
        <source>Return puts a mark in the middle; arrow keys move it, with Shift they change its size, with Ctrl they go further; Return keeps it, Escape takes it away</source>
        <translation>Enter で中央に注釈を置き、矢印キーで移動、Shift で大きさを変更、Ctrl で大きく動かし、Enter で確定、Esc で取り消します</translation>
    </message>
    <message>
        <source>%1, opacity %2 %</source>
        <translation>%1、不透明度 %2%</translation>
    </message>
</context>
<context>
    <name>ColorPanel</name>
    <message>
        <source>Colours</source>
        <translation>カラー</translation>
    </message>
</context>
<context>
    <name>OpenPanel</name>
    <message>
        <source>Pictures</source>
        <translation>画像</translation>
    </message>
</context>
<context>
    <name>SavePanel</name>
    <message>
        <source>Save Result</source>
        <translation>結果を保存</translation>
    </message>
    <message>
        <source>Save in:</source>
        <translation>保存先:</translation>
    </message>
</context>
<context>
    <name>skarnel::AnnotateBar</name>
    <message>
        <source>Red</source>
        <translation>赤</translation>
    </message>
    <message>
        <source>Yellow</source>
        <translation>黄</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>青</translation>
    </message>
    <message>
        <source>White</source>
        <translation>白</translation>
    </message>
    <message>
        <source>Ellipse</source>
        <translation>楕円</translation>
    </message>
    <message>
        <source>Arrow</source>
        <translation>矢印</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>テキスト</translation>
    </message>
    <message>
        <source>Remove all marks</source>
        <translation>すべての注釈を消去</translation>
    </message>
</context>
<context>
    <name>skarnel::Application</name>
    <message>
        <source>Only a picture file of this computer can be dropped here.</source>
        <translation>ここにドロップできるのは、このコンピューターの画像ファイルだけです。</translation>
    </message>
    <message>
        <source>The page cannot be opened: %1</source>
        <translation>ページを開けません: %1</translation>
    </message>
    <message>
        <source>“%1” cannot be read: %2.</source>
        <translation>「%1」を読み込めません: %2。</translation>
    </message>
    <message>
        <source>“%1” is no picture that can be opened.</source>
        <translation>「%1」は開ける画像ではありません。</translation>
    </message>
    <message>
        <source>“%1” is damaged and cannot be opened.</source>
        <translation>「%1」は破損しているため開けません。</translation>
    </message>
    <message>
        <source>“%1” cannot be opened: %2.</source>
        <translation>「%1」を開けません: %2。</translation>
    </message>
    <message>
        <source>The picture waits under Open Recent.</source>
        <translation>画像は「最近使ったファイル」から開けます。</translation>
    </message>
    <message>
        <source>There is no picture on the clipboard.</source>
        <translation>クリップボードに画像がありません。</translation>
    </message>
    <message>
        <source>Pasted Picture</source>
        <translation>貼り付けた画像</translation>
    </message>
    <message>
        <source>The picture cannot be pasted.</source>
        <translation>画像を貼り付けられません。</translation>
    </message>
    <message>
        <source>&amp;Clear Menu</source>
        <translation>リストを消去(&amp;C)</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>リセット</translation>
    </message>
    <message>
        <source>About Skarnel</source>
        <translation>Skarnel について</translation>
    </message>
    <message>
        <source>Turns a picture into its reflection.</source>
        <translation>画像から反射画像を作ります。</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>テキスト</translation>
    </message>
    <message>
        <source>Saved %1</source>
        <translation>%1 を保存しました</translation>
    </message>
    <message>
        <source>Copied</source>
        <translation>コピーしました</translation>
    </message>
    <message>
        <source>Copied as PNG</source>
        <translation>PNG としてコピーしました</translation>
    </message>
    <message>
        <source>The text cannot be made a picture: %1.</source>
        <translation>テキストを画像にできません: %1。</translation>
    </message>
    <message>
        <source>The text cannot be made a picture.</source>
        <translation>テキストを画像にできません。</translation>
    </message>
    <message>
        <source>Saving “%1” …</source>
        <translation>「%1」を保存しています…</translation>
    </message>
</context>
<context>
    <name>skarnel::Companions</name>
    <message>
        <source>Looks</source>
        <translation>スタイル</translation>
    </message>
    <message>
        <source>Show &amp;Looks</source>
        <translation>スタイルを表示(&amp;L)</translation>
    </message>
    <message>
        <source>Show the looks below the picture</source>
        <translation>画像の下にスタイルを表示します</translation>
    </message>
    <message>
        <source>User&apos;s &amp;Guide</source>
        <translation>ユーザーガイド(&amp;G)</translation>
    </message>
    <message>
        <source>Open the guide that came with the program</source>
        <translation>付属のガイドを開きます</translation>
    </message>
    <message>
        <source>The result cannot be dragged: %1.</source>
        <translation>結果をドラッグできません: %1。</translation>
    </message>
    <message>
        <source>Pictu&amp;re Alone</source>
        <translation>元の画像だけ(&amp;R)</translation>
    </message>
    <message>
        <source>Space, held</source>
        <translation>Space (押している間)</translation>
    </message>
    <message>
        <source>Show the picture without its reflection</source>
        <translation>反射のない元の画像を表示します</translation>
    </message>
    <message>
        <source>Save Loo&amp;k…</source>
        <translation>スタイルを保存(&amp;K)…</translation>
    </message>
    <message>
        <source>Save the settings as a look</source>
        <translation>設定をスタイルとして保存します</translation>
    </message>
</context>
<context>
    <name>skarnel::CompareOverlay</name>
    <message>
        <source>The picture without its reflection</source>
        <translation>反射のない元の画像</translation>
    </message>
</context>
<context>
    <name>skarnel::MainActions</name>
    <message>
        <source>&amp;Open…</source>
        <translation>開く(&amp;O)…</translation>
    </message>
    <message>
        <source>Open a photo</source>
        <translation>写真を開きます</translation>
    </message>
    <message>
        <source>&amp;Save…</source>
        <translation>保存(&amp;S)…</translation>
    </message>
    <message>
        <source>Save the result</source>
        <translation>結果を保存します</translation>
    </message>
    <message>
        <source>Save and &amp;Edit…</source>
        <translation>保存して編集(&amp;E)…</translation>
    </message>
    <message>
        <source>Save the result and edit</source>
        <translation>結果を保存して編集します</translation>
    </message>
    <message>
        <source>&amp;Close Without Saving</source>
        <translation>保存せずに閉じる(&amp;C)</translation>
    </message>
    <message>
        <source>Hide the window; starting the program again shows it</source>
        <translation>ウィンドウを隠します。プログラムをもう一度起動すると表示されます</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>終了(&amp;Q)</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>終了します</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>元に戻す(&amp;U)</translation>
    </message>
    <message>
        <source>Undo the last change of the settings</source>
        <translation>設定の最後の変更を元に戻します</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>やり直す(&amp;R)</translation>
    </message>
    <message>
        <source>Redo the change of the settings</source>
        <translation>設定の変更をやり直します</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>コピー(&amp;C)</translation>
    </message>
    <message>
        <source>Copy the result</source>
        <translation>結果をコピーします</translation>
    </message>
    <message>
        <source>Copy as &amp;PNG</source>
        <translation>PNG としてコピー(&amp;P)</translation>
    </message>
    <message>
        <source>Copy the result for programs that take no TIFF</source>
        <translation>TIFF を受け付けないプログラム用に結果をコピーします</translation>
    </message>
    <message>
        <source>Copy Se&amp;lection</source>
        <translation>選択範囲をコピー(&amp;L)</translation>
    </message>
    <message>
        <source>Copy the selected part of what is shown</source>
        <translation>表示中の選択した部分をコピーします</translation>
    </message>
    <message>
        <source>Make the picture on the clipboard the source</source>
        <translation>クリップボードの画像を元の画像にします</translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation>すべて選択(&amp;A)</translation>
    </message>
    <message>
        <source>Select the whole picture</source>
        <translation>画像全体を選択します</translation>
    </message>
    <message>
        <source>Re&amp;set Settings</source>
        <translation>設定をリセット(&amp;S)</translation>
    </message>
    <message>
        <source>Return every setting to its default</source>
        <translation>すべての設定を既定値に戻します</translation>
    </message>
    <message>
        <source>Play a S&amp;ound After Copying</source>
        <translation>コピー後に音を鳴らす(&amp;O)</translation>
    </message>
    <message>
        <source>Play a sound after copying</source>
        <translation>コピーした後に音を鳴らします</translation>
    </message>
    <message>
        <source>Zoom &amp;Out</source>
        <translation>縮小(&amp;O)</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>表示を縮小します</translation>
    </message>
    <message>
        <source>Zoom &amp;In</source>
        <translation>拡大(&amp;I)</translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation>表示を拡大します</translation>
    </message>
    <message>
        <source>&amp;Actual Size</source>
        <translation>実際のサイズ(&amp;A)</translation>
    </message>
    <message>
        <source>One image pixel on one screen pixel</source>
        <translation>画像の 1 ピクセルを画面の 1 ピクセルで表示します</translation>
    </message>
    <message>
        <source>&amp;Fit to Window</source>
        <translation>ウィンドウに合わせる(&amp;F)</translation>
    </message>
    <message>
        <source>Show the whole picture</source>
        <translation>画像全体を表示します</translation>
    </message>
    <message>
        <source>&amp;Checkerboard</source>
        <translation>市松模様(&amp;C)</translation>
    </message>
    <message>
        <source>Show a checkerboard where the result is transparent</source>
        <translation>結果が透明な部分に市松模様を表示します</translation>
    </message>
    <message>
        <source>Show &amp;Text</source>
        <translation>テキストを表示(&amp;T)</translation>
    </message>
    <message>
        <source>Show the text below the picture</source>
        <translation>画像の下にテキストを表示します</translation>
    </message>
    <message>
        <source>F&amp;ull Screen</source>
        <translation>全画面表示(&amp;U)</translation>
    </message>
    <message>
        <source>Full screen</source>
        <translation>全画面で表示します</translation>
    </message>
    <message>
        <source>As the &amp;System</source>
        <translation>システムに合わせる(&amp;S)</translation>
    </message>
    <message>
        <source>&amp;Light</source>
        <translation>ライト(&amp;L)</translation>
    </message>
    <message>
        <source>&amp;Dark</source>
        <translation>ダーク(&amp;D)</translation>
    </message>
    <message>
        <source>&amp;Move</source>
        <translation>移動(&amp;M)</translation>
    </message>
    <message>
        <source>Move the picture by dragging</source>
        <translation>ドラッグして画像を動かします</translation>
    </message>
    <message>
        <source>&amp;Select</source>
        <translation>選択(&amp;S)</translation>
    </message>
    <message>
        <source>Select a part by dragging</source>
        <translation>ドラッグして一部を選択します</translation>
    </message>
    <message>
        <source>&amp;Crop</source>
        <translation>切り抜き(&amp;C)</translation>
    </message>
    <message>
        <source>Show only the part that is dragged over; Escape shows all</source>
        <translation>ドラッグした部分だけを表示します。Esc ですべて表示します</translation>
    </message>
    <message>
        <source>&amp;Rotate</source>
        <translation>回転(&amp;R)</translation>
    </message>
    <message>
        <source>Turn what is shown by dragging; Shift turns in steps</source>
        <translation>ドラッグして表示を回転します。Shift で一定の角度ずつ回転します</translation>
    </message>
    <message>
        <source>&amp;Annotate</source>
        <translation>注釈(&amp;A)</translation>
    </message>
    <message>
        <source>Put marks on what is shown</source>
        <translation>表示に注釈を付けます</translation>
    </message>
    <message>
        <source>Show the &amp;Whole Picture</source>
        <translation>画像全体を表示(&amp;W)</translation>
    </message>
    <message>
        <source>Forget crop, turn, selection and marks</source>
        <translation>切り抜き、回転、選択、注釈を取り消します</translation>
    </message>
    <message>
        <source>&amp;Image Text</source>
        <translation>テキストを画像にする(&amp;I)</translation>
    </message>
    <message>
        <source>Make the text the picture</source>
        <translation>テキストを画像として使います</translation>
    </message>
    <message>
        <source>&amp;Background Colour…</source>
        <translation>背景色(&amp;B)…</translation>
    </message>
    <message>
        <source>Choose the background colour</source>
        <translation>背景色を選びます</translation>
    </message>
    <message>
        <source>Text &amp;Colour…</source>
        <translation>テキストの色(&amp;C)…</translation>
    </message>
    <message>
        <source>Choose the colour of the text</source>
        <translation>テキストの色を選びます</translation>
    </message>
    <message>
        <source>Skarnel &amp;Help</source>
        <translation>Skarnel ヘルプ(&amp;H)</translation>
    </message>
    <message>
        <source>Open the product&apos;s page</source>
        <translation>製品のページを開きます</translation>
    </message>
    <message>
        <source>&amp;About Skarnel</source>
        <translation>Skarnel について(&amp;A)</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>ファイル(&amp;F)</translation>
    </message>
    <message>
        <source>Open &amp;Recent</source>
        <translation>最近使ったファイル(&amp;R)</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>編集(&amp;E)</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>表示(&amp;V)</translation>
    </message>
    <message>
        <source>A&amp;ppearance</source>
        <translation>外観(&amp;P)</translation>
    </message>
    <message>
        <source>&amp;Tools</source>
        <translation>ツール(&amp;T)</translation>
    </message>
    <message>
        <source>Te&amp;xt</source>
        <translation>テキスト(&amp;X)</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>ヘルプ(&amp;H)</translation>
    </message>
    <message>
        <source>Tools</source>
        <translation>ツール</translation>
    </message>
    <message>
        <source>Zoom</source>
        <translation>表示倍率</translation>
    </message>
    <message>
        <source>&amp;Undo %1</source>
        <translation>元に戻す(&amp;U): %1</translation>
    </message>
    <message>
        <source>&amp;Redo %1</source>
        <translation>やり直す(&amp;R): %1</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1%</translation>
    </message>
    <message>
        <source>Pas&amp;te Picture</source>
        <translation>画像を貼り付け(&amp;T)</translation>
    </message>
    <message>
        <source>Zoom: %1 %</source>
        <translation>表示倍率: %1%</translation>
    </message>
</context>
<context>
    <name>skarnel::MoreLooks</name>
    <message>
        <source>More looks</source>
        <translation>ほかのスタイル</translation>
    </message>
</context>
<context>
    <name>skarnel::PresetStrip</name>
    <message>
        <source>Mirror</source>
        <translation>鏡</translation>
    </message>
    <message>
        <source>Subtle Floor</source>
        <translation>淡い床</translation>
    </message>
    <message>
        <source>Glossy Table</source>
        <translation>つややかなテーブル</translation>
    </message>
    <message>
        <source>Tall Mirror</source>
        <translation>縦長の鏡</translation>
    </message>
    <message>
        <source>Still Water</source>
        <translation>静かな水面</translation>
    </message>
    <message>
        <source>Stage</source>
        <translation>ステージ</translation>
    </message>
    <message>
        <source>Floating</source>
        <translation>浮遊</translation>
    </message>
    <message>
        <source>Shop Window</source>
        <translation>ショーウィンドウ</translation>
    </message>
    <message>
        <source>Card to the Left</source>
        <translation>左向きのカード</translation>
    </message>
    <message>
        <source>Card to the Right</source>
        <translation>右向きのカード</translation>
    </message>
    <message>
        <source>Cover</source>
        <translation>カバー</translation>
    </message>
    <message>
        <source>Twin</source>
        <translation>双子</translation>
    </message>
    <message>
        <source>Looks</source>
        <translation>スタイル</translation>
    </message>
    <message>
        <source>Save the settings as a look</source>
        <translation>設定をスタイルとして保存します</translation>
    </message>
    <message>
        <source>Save as Look</source>
        <translation>スタイルとして保存</translation>
    </message>
    <message>
        <source>Return uses a look; F2 renames and Delete removes one of your own</source>
        <translation>Enter でスタイルを使います。自分のスタイルは F2 で名前を変更、Delete で削除します</translation>
    </message>
    <message>
        <source>&amp;Save Settings as Look</source>
        <translation>設定をスタイルとして保存(&amp;S)</translation>
    </message>
    <message>
        <source>&amp;Rename</source>
        <translation>名前を変更(&amp;R)</translation>
    </message>
    <message>
        <source>Re&amp;move</source>
        <translation>削除(&amp;M)</translation>
    </message>
    <message>
        <source>Rename “%1”</source>
        <translation>「%1」の名前の変更</translation>
    </message>
    <message>
        <source>Remove “%1”</source>
        <translation>「%1」の削除</translation>
    </message>
</context>
<context>
    <name>skarnel::RecipeCommands</name>
    <message>
        <source>Save the settings, the background and the text as a file</source>
        <translation>設定、背景、テキストをファイルとして保存します</translation>
    </message>
    <message>
        <source>Use the settings, the background and the text of a recipe</source>
        <translation>レシピの設定、背景、テキストを使います</translation>
    </message>
    <message>
        <source>Use the settings of a recipe, or of a picture that carries one</source>
        <translation>レシピ、またはレシピを含む画像の設定を使います</translation>
    </message>
    <message>
        <source>Save Recipe</source>
        <translation>レシピを保存</translation>
    </message>
    <message>
        <source>Recipes (*.skarnel)</source>
        <translation>レシピ (*.skarnel)</translation>
    </message>
    <message>
        <source>Open Recipe</source>
        <translation>レシピを開く</translation>
    </message>
    <message>
        <source>Take Settings From</source>
        <translation>設定を読み込む</translation>
    </message>
    <message>
        <source>Recipes and pictures (*.skarnel *.tif *.tiff *.png *.jpg *.jpeg)</source>
        <translation>レシピと画像 (*.skarnel *.tif *.tiff *.png *.jpg *.jpeg)</translation>
    </message>
    <message>
        <source>The recipe cannot be saved: %1.</source>
        <translation>レシピを保存できません: %1。</translation>
    </message>
    <message>
        <source>“%1”: %2.</source>
        <translation>「%1」: %2。</translation>
    </message>
    <message>
        <source>The text of “%1” cannot be made a picture.</source>
        <translation>「%1」のテキストから画像を作れません。</translation>
    </message>
    <message>
        <source>Recipe</source>
        <translation>レシピ</translation>
    </message>
    <message>
        <source>The settings stay as they are while a panel is open.</source>
        <translation>ダイアログが開いている間、設定は変更されません。</translation>
    </message>
    <message>
        <source>Taken Settings</source>
        <translation>設定の読み込み</translation>
    </message>
    <message>
        <source>Save Reci&amp;pe…</source>
        <translation>レシピを保存(&amp;P)…</translation>
    </message>
    <message>
        <source>Ope&amp;n Recipe…</source>
        <translation>レシピを開く(&amp;N)…</translation>
    </message>
    <message>
        <source>&amp;Take Settings From…</source>
        <translation>設定を読み込む(&amp;T)…</translation>
    </message>
    <message>
        <source>“%1” was saved without its settings: %2.</source>
        <translation>「%1」は設定なしで保存されました: %2。</translation>
    </message>
</context>
<context>
    <name>skarnel::SaveOptionsView</name>
    <message>
        <source>Format</source>
        <translation>形式</translation>
    </message>
    <message>
        <source>&amp;Format:</source>
        <translation>形式(&amp;F):</translation>
    </message>
    <message>
        <source>Resolution:</source>
        <translation>解像度:</translation>
    </message>
    <message>
        <source>&amp;Keep the settings inside the file</source>
        <translation>設定をファイルに含める(&amp;K)</translation>
    </message>
    <message>
        <source>“Take Settings From” finds them there; for a picture of text they hold the text</source>
        <translation>「設定を読み込む」で取り出せます。テキストから作った画像ではテキストも含まれます</translation>
    </message>
    <message>
        <source>none, as the source</source>
        <translation>なし (元の画像と同じ)</translation>
    </message>
    <message>
        <source>%1 dpi, as the source</source>
        <translation>%1 dpi (元の画像と同じ)</translation>
    </message>
    <message>
        <source>Compression</source>
        <translation>圧縮</translation>
    </message>
    <message>
        <source>None</source>
        <translation>なし</translation>
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
        <translation>圧縮(&amp;C):</translation>
    </message>
    <message>
        <source>Fast</source>
        <translation>速い</translation>
    </message>
    <message>
        <source>Small</source>
        <translation>小さい</translation>
    </message>
    <message>
        <source>Quality</source>
        <translation>品質</translation>
    </message>
    <message>
        <source>Quality, number</source>
        <translation>品質、数値</translation>
    </message>
    <message>
        <source>&amp;Quality:</source>
        <translation>品質(&amp;Q):</translation>
    </message>
</context>
<context>
    <name>skarnel::SettingsPanel</name>
    <message>
        <source>Height</source>
        <translation>高さ</translation>
    </message>
    <message>
        <source>Height of the reflection, in percent of the picture&apos;s</source>
        <translation>反射の高さ (画像の高さに対するパーセント)</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>幅</translation>
    </message>
    <message>
        <source>Widening of the reflection at its far edge, in percent of the picture&apos;s width on each side</source>
        <translation>反射の遠い側の広がり (片側ごとに画像の幅に対するパーセント)</translation>
    </message>
    <message>
        <source>Gap</source>
        <translation>間隔</translation>
    </message>
    <message>
        <source>Gap between picture and reflection, in percent of the reflection&apos;s height</source>
        <translation>画像と反射の間隔 (反射の高さに対するパーセント)</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>開始位置</translation>
    </message>
    <message>
        <source>Lift of the fade, in percent of the reflection&apos;s height</source>
        <translation>フェードの持ち上げ (反射の高さに対するパーセント)</translation>
    </message>
    <message>
        <source>Gradient</source>
        <translation>勾配</translation>
    </message>
    <message>
        <source>Steepness of the fade, in tenths of its exponent</source>
        <translation>フェードの急さ (指数の 10 分の 1 単位)</translation>
    </message>
    <message>
        <source>Opacity</source>
        <translation>不透明度</translation>
    </message>
    <message>
        <source>Peak opacity of the reflection; above 255 bright parts turn dark</source>
        <translation>反射の最大の不透明度。255 を超えると明るい部分が暗くなります</translation>
    </message>
    <message>
        <source>Turn</source>
        <translation>回転</translation>
    </message>
    <message>
        <source>Turn of the whole picture in perspective: level at 0, 50 and 100, strongest at 25 and 75</source>
        <translation>全体の遠近回転。0、50、100 で正面を向き、25 と 75 で最大になります</translation>
    </message>
    <message>
        <source>&amp;Reset</source>
        <translation>リセット(&amp;R)</translation>
    </message>
    <message>
        <source>Return every setting to its default</source>
        <translation>すべての設定を既定値に戻します</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>設定</translation>
    </message>
    <message>
        <source>Reflection</source>
        <translation>反射</translation>
    </message>
    <message>
        <source>Fade</source>
        <translation>フェード</translation>
    </message>
    <message>
        <source>Perspective</source>
        <translation>遠近感</translation>
    </message>
    <message>
        <source>%1, number</source>
        <translation>%1、数値</translation>
    </message>
    <message>
        <source>Background</source>
        <translation>背景</translation>
    </message>
    <message>
        <source>Background colour</source>
        <translation>背景色</translation>
    </message>
    <message>
        <source>Choose the colour behind the picture</source>
        <translation>画像の背後の色を選びます</translation>
    </message>
    <message>
        <source>Background colour as #RRGGBB</source>
        <translation>#RRGGBB 形式の背景色</translation>
    </message>
    <message>
        <source>The background colour as #RRGGBB</source>
        <translation>背景色を #RRGGBB で表します</translation>
    </message>
    <message>
        <source>Lay the background colour under the result, so that it is saved too</source>
        <translation>結果の下に背景色を敷き、一緒に保存します</translation>
    </message>
    <message>
        <source>Fill with Background</source>
        <translation>背景で塗りつぶし</translation>
    </message>
    <message>
        <source>Fi&amp;ll the result with it</source>
        <translation>結果をこの色で塗る(&amp;L)</translation>
    </message>
</context>
<context>
    <name>skarnel::TextBar</name>
    <message>
        <source>&amp;Image Text</source>
        <translation>画像にする(&amp;I)</translation>
    </message>
    <message>
        <source>Make the text the picture</source>
        <translation>テキストを画像として使います</translation>
    </message>
    <message>
        <source>Typeface</source>
        <translation>書体</translation>
    </message>
    <message>
        <source>Text size</source>
        <translation>文字サイズ</translation>
    </message>
    <message>
        <source>Bo&amp;ld</source>
        <translation>太字(&amp;L)</translation>
    </message>
    <message>
        <source>Bold</source>
        <translation>太字</translation>
    </message>
    <message>
        <source>I&amp;talic</source>
        <translation>斜体(&amp;T)</translation>
    </message>
    <message>
        <source>Italic</source>
        <translation>斜体</translation>
    </message>
    <message>
        <source>&amp;Underline</source>
        <translation>下線(&amp;U)</translation>
    </message>
    <message>
        <source>Underline</source>
        <translation>下線</translation>
    </message>
    <message>
        <source>Text colour</source>
        <translation>テキストの色</translation>
    </message>
    <message>
        <source>Align L&amp;eft</source>
        <translation>左揃え(&amp;E)</translation>
    </message>
    <message>
        <source>Align left</source>
        <translation>左揃え</translation>
    </message>
    <message>
        <source>Ce&amp;ntre</source>
        <translation>中央揃え(&amp;N)</translation>
    </message>
    <message>
        <source>Centre</source>
        <translation>中央揃え</translation>
    </message>
    <message>
        <source>Align &amp;Right</source>
        <translation>右揃え(&amp;R)</translation>
    </message>
    <message>
        <source>Align right</source>
        <translation>右揃え</translation>
    </message>
</context>
<context>
    <name>skarnel::TextEditor</name>
    <message>
        <source>Text to image</source>
        <translation>画像にするテキスト</translation>
    </message>
    <message>
        <source>Type and style text here; Image Text makes it the picture</source>
        <translation>ここにテキストを入力して書式を付けます。「画像にする」で画像になります</translation>
    </message>
</context>
<context>
    <name>skarnel::UserPresets</name>
    <message>
        <source>My Look</source>
        <translation>マイスタイル</translation>
    </message>
</context>
<context>
    <name>skarnel::Viewer</name>
    <message>
        <source>Picture</source>
        <translation>画像</translation>
    </message>
    <message>
        <source>Text on the picture</source>
        <translation>画像上のテキスト</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>テキスト</translation>
    </message>
    <message>
        <source>The picture with its reflection, as it would be saved; Space shows the picture alone</source>
        <translation>保存される状態の、反射の付いた画像です。スペースキーで元の画像だけを表示します</translation>
    </message>
</context>
<context>
    <name>skarnel::ViewerScrollBars</name>
    <message>
        <source>Picture, sideways</source>
        <translation>画像、左右</translation>
    </message>
    <message>
        <source>Picture, up and down</source>
        <translation>画像、上下</translation>
    </message>
</context>
</TS>

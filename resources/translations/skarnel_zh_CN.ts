<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN">
<context>
    <name>AccessibleView</name>
    <message>
        <source>%1 by %2 pixels, zoom %3 %</source>
        <translation>%1 × %2 像素，缩放 %3%</translation>
    </message>
    <message>
        <source>cropped to %1 by %2 at %3, %4</source>
        <translation>裁剪为 %1 × %2，位于 %3, %4</translation>
    </message>
    <message>
        <source>turned by %1°</source>
        <translation>已旋转 %1°</translation>
    </message>
    <message>
        <source>selected %1 by %2 at %3, %4</source>
        <translation>已选择 %1 × %2，位于 %3, %4</translation>
    </message>
    <message>
        <source>marks: %1, the last from %2, %3 to %4, %5</source>
        <translation>标注：%1 个，最后一个从 %2, %3 到 %4, %5</translation>
    </message>
    <message>
        <source>Return begins a selection; arrow keys move it, with Shift they change its size, with Ctrl they go further; Escape takes it away</source>
        <translation>回车键开始选择；方向键移动，按住 Shift 改变大小，按住 Ctrl 移动更多；Esc 取消</translation>
    </message>
    <message>
        <source>Return begins a frame; arrow keys move it, with Shift they change its size, with Ctrl they go further; Return crops, Escape gives up</source>
        <translation>回车键开始裁剪框；方向键移动，按住 Shift 改变大小，按住 Ctrl 移动更多；回车键裁剪，Esc 放弃</translation>
    </message>
    <message>
        <source>Left and right arrow keys turn the picture, with Shift in steps; Escape turns it back</source>
        <translation>左右方向键旋转图片，按住 Shift 按步旋转；Esc 转回</translation>
    </message>
    <message>
        <source>Return puts a mark in the middle; arrow keys move it, with Shift they change its size, with Ctrl they go further; Return keeps it, Escape takes it away</source>
        <translation>回车键在中央放置标注；方向键移动，按住 Shift 改变大小，按住 Ctrl 移动更多；回车键保留，Esc 移除</translation>
    </message>
    <message>
        <source>%1, opacity %2 %</source>
        <translation>%1，不透明度 %2%</translation>
    </message>
</context>
<context>
    <name>ColorPanel</name>
    <message>
        <source>Colours</source>
        <translation>颜色</translation>
    </message>
</context>
<context>
    <name>OpenPanel</name>
    <message>
        <source>Pictures</source>
        <translation>图片</translation>
    </message>
</context>
<context>
    <name>SavePanel</name>
    <message>
        <source>Save Result</source>
        <translation>保存结果</translation>
    </message>
    <message>
        <source>Save in:</source>
        <translation>保存位置：</translation>
    </message>
</context>
<context>
    <name>skarnel::AnnotateBar</name>
    <message>
        <source>Red</source>
        <translation>红色</translation>
    </message>
    <message>
        <source>Yellow</source>
        <translation>黄色</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>蓝色</translation>
    </message>
    <message>
        <source>White</source>
        <translation>白色</translation>
    </message>
    <message>
        <source>Ellipse</source>
        <translation>椭圆</translation>
    </message>
    <message>
        <source>Arrow</source>
        <translation>箭头</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>文字</translation>
    </message>
    <message>
        <source>Remove all marks</source>
        <translation>清除所有标注</translation>
    </message>
</context>
<context>
    <name>skarnel::Application</name>
    <message>
        <source>Only a picture file of this computer can be dropped here.</source>
        <translation>此处只能放入本机的图片文件。</translation>
    </message>
    <message>
        <source>The page cannot be opened: %1</source>
        <translation>无法打开页面：%1</translation>
    </message>
    <message>
        <source>“%1” cannot be read: %2.</source>
        <translation>无法读取“%1”：%2。</translation>
    </message>
    <message>
        <source>“%1” is no picture that can be opened.</source>
        <translation>“%1”不是可以打开的图片。</translation>
    </message>
    <message>
        <source>“%1” is damaged and cannot be opened.</source>
        <translation>“%1”已损坏，无法打开。</translation>
    </message>
    <message>
        <source>“%1” cannot be opened: %2.</source>
        <translation>无法打开“%1”：%2。</translation>
    </message>
    <message>
        <source>The picture waits under Open Recent.</source>
        <translation>图片已放入“打开最近的文件”。</translation>
    </message>
    <message>
        <source>There is no picture on the clipboard.</source>
        <translation>剪贴板中没有图片。</translation>
    </message>
    <message>
        <source>Pasted Picture</source>
        <translation>粘贴的图片</translation>
    </message>
    <message>
        <source>The picture cannot be pasted.</source>
        <translation>无法粘贴图片。</translation>
    </message>
    <message>
        <source>&amp;Clear Menu</source>
        <translation>清空列表(&amp;C)</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>重置</translation>
    </message>
    <message>
        <source>About Skarnel</source>
        <translation>关于 Skarnel</translation>
    </message>
    <message>
        <source>Turns a picture into its reflection.</source>
        <translation>为图片制作倒影。</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>文字</translation>
    </message>
    <message>
        <source>Saved %1</source>
        <translation>已保存 %1</translation>
    </message>
    <message>
        <source>Copied</source>
        <translation>已复制</translation>
    </message>
    <message>
        <source>Copied as PNG</source>
        <translation>已复制为 PNG</translation>
    </message>
    <message>
        <source>The text cannot be made a picture: %1.</source>
        <translation>无法将文字转为图片：%1。</translation>
    </message>
    <message>
        <source>The text cannot be made a picture.</source>
        <translation>无法将文字转为图片。</translation>
    </message>
    <message>
        <source>Saving “%1” …</source>
        <translation>正在保存“%1”…</translation>
    </message>
</context>
<context>
    <name>skarnel::Companions</name>
    <message>
        <source>Looks</source>
        <translation>样式</translation>
    </message>
    <message>
        <source>Show &amp;Looks</source>
        <translation>显示样式(&amp;L)</translation>
    </message>
    <message>
        <source>Show the looks below the picture</source>
        <translation>在图片下方显示样式</translation>
    </message>
    <message>
        <source>User&apos;s &amp;Guide</source>
        <translation>用户指南(&amp;G)</translation>
    </message>
    <message>
        <source>Open the guide that came with the program</source>
        <translation>打开随程序附带的指南</translation>
    </message>
    <message>
        <source>The result cannot be dragged: %1.</source>
        <translation>无法拖出结果：%1。</translation>
    </message>
    <message>
        <source>Pictu&amp;re Alone</source>
        <translation>仅原图(&amp;R)</translation>
    </message>
    <message>
        <source>Space, held</source>
        <translation>按住空格键</translation>
    </message>
    <message>
        <source>Show the picture without its reflection</source>
        <translation>显示不带倒影的图片</translation>
    </message>
    <message>
        <source>Save Loo&amp;k…</source>
        <translation>保存样式(&amp;K)…</translation>
    </message>
    <message>
        <source>Save the settings as a look</source>
        <translation>将设置保存为样式</translation>
    </message>
</context>
<context>
    <name>skarnel::CompareOverlay</name>
    <message>
        <source>The picture without its reflection</source>
        <translation>不带倒影的图片</translation>
    </message>
</context>
<context>
    <name>skarnel::MainActions</name>
    <message>
        <source>&amp;Open…</source>
        <translation>打开(&amp;O)…</translation>
    </message>
    <message>
        <source>Open a photo</source>
        <translation>打开照片</translation>
    </message>
    <message>
        <source>&amp;Save…</source>
        <translation>保存(&amp;S)…</translation>
    </message>
    <message>
        <source>Save the result</source>
        <translation>保存结果</translation>
    </message>
    <message>
        <source>Save and &amp;Edit…</source>
        <translation>保存并编辑(&amp;E)…</translation>
    </message>
    <message>
        <source>Save the result and edit</source>
        <translation>保存结果并编辑</translation>
    </message>
    <message>
        <source>&amp;Close Without Saving</source>
        <translation>关闭而不保存(&amp;C)</translation>
    </message>
    <message>
        <source>Hide the window; starting the program again shows it</source>
        <translation>隐藏窗口；再次启动程序时会重新显示</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>退出(&amp;Q)</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>退出</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>撤销(&amp;U)</translation>
    </message>
    <message>
        <source>Undo the last change of the settings</source>
        <translation>撤销对设置的上一次更改</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>重做(&amp;R)</translation>
    </message>
    <message>
        <source>Redo the change of the settings</source>
        <translation>重做对设置的更改</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>复制(&amp;C)</translation>
    </message>
    <message>
        <source>Copy the result</source>
        <translation>复制结果</translation>
    </message>
    <message>
        <source>Copy as &amp;PNG</source>
        <translation>复制为 PNG(&amp;P)</translation>
    </message>
    <message>
        <source>Copy the result for programs that take no TIFF</source>
        <translation>为不支持 TIFF 的程序复制结果</translation>
    </message>
    <message>
        <source>Copy Se&amp;lection</source>
        <translation>复制选区(&amp;L)</translation>
    </message>
    <message>
        <source>Copy the selected part of what is shown</source>
        <translation>复制所显示内容的选中部分</translation>
    </message>
    <message>
        <source>Make the picture on the clipboard the source</source>
        <translation>将剪贴板中的图片作为源图片</translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation>全选(&amp;A)</translation>
    </message>
    <message>
        <source>Select the whole picture</source>
        <translation>选择整张图片</translation>
    </message>
    <message>
        <source>Re&amp;set Settings</source>
        <translation>重置设置(&amp;S)</translation>
    </message>
    <message>
        <source>Return every setting to its default</source>
        <translation>将所有设置恢复为默认值</translation>
    </message>
    <message>
        <source>Play a S&amp;ound After Copying</source>
        <translation>复制后播放声音(&amp;O)</translation>
    </message>
    <message>
        <source>Play a sound after copying</source>
        <translation>复制后播放声音</translation>
    </message>
    <message>
        <source>Zoom &amp;Out</source>
        <translation>缩小(&amp;O)</translation>
    </message>
    <message>
        <source>Zoom out</source>
        <translation>缩小显示</translation>
    </message>
    <message>
        <source>Zoom &amp;In</source>
        <translation>放大(&amp;I)</translation>
    </message>
    <message>
        <source>Zoom in</source>
        <translation>放大显示</translation>
    </message>
    <message>
        <source>&amp;Actual Size</source>
        <translation>实际大小(&amp;A)</translation>
    </message>
    <message>
        <source>One image pixel on one screen pixel</source>
        <translation>图片的一个像素对应屏幕的一个像素</translation>
    </message>
    <message>
        <source>&amp;Fit to Window</source>
        <translation>适合窗口(&amp;F)</translation>
    </message>
    <message>
        <source>Show the whole picture</source>
        <translation>显示整张图片</translation>
    </message>
    <message>
        <source>&amp;Checkerboard</source>
        <translation>棋盘格(&amp;C)</translation>
    </message>
    <message>
        <source>Show a checkerboard where the result is transparent</source>
        <translation>在结果透明处显示棋盘格</translation>
    </message>
    <message>
        <source>Show &amp;Text</source>
        <translation>显示文字(&amp;T)</translation>
    </message>
    <message>
        <source>Show the text below the picture</source>
        <translation>在图片下方显示文字</translation>
    </message>
    <message>
        <source>F&amp;ull Screen</source>
        <translation>全屏(&amp;U)</translation>
    </message>
    <message>
        <source>Full screen</source>
        <translation>全屏显示</translation>
    </message>
    <message>
        <source>As the &amp;System</source>
        <translation>跟随系统(&amp;S)</translation>
    </message>
    <message>
        <source>&amp;Light</source>
        <translation>浅色(&amp;L)</translation>
    </message>
    <message>
        <source>&amp;Dark</source>
        <translation>深色(&amp;D)</translation>
    </message>
    <message>
        <source>&amp;Move</source>
        <translation>移动(&amp;M)</translation>
    </message>
    <message>
        <source>Move the picture by dragging</source>
        <translation>拖动以移动图片</translation>
    </message>
    <message>
        <source>&amp;Select</source>
        <translation>选择(&amp;S)</translation>
    </message>
    <message>
        <source>Select a part by dragging</source>
        <translation>拖动以选择一部分</translation>
    </message>
    <message>
        <source>&amp;Crop</source>
        <translation>裁剪(&amp;C)</translation>
    </message>
    <message>
        <source>Show only the part that is dragged over; Escape shows all</source>
        <translation>只显示拖动选出的部分；按 Esc 显示全部</translation>
    </message>
    <message>
        <source>&amp;Rotate</source>
        <translation>旋转(&amp;R)</translation>
    </message>
    <message>
        <source>Turn what is shown by dragging; Shift turns in steps</source>
        <translation>拖动以旋转显示；按住 Shift 逐级旋转</translation>
    </message>
    <message>
        <source>&amp;Annotate</source>
        <translation>标注(&amp;A)</translation>
    </message>
    <message>
        <source>Put marks on what is shown</source>
        <translation>在显示的图片上添加标注</translation>
    </message>
    <message>
        <source>Show the &amp;Whole Picture</source>
        <translation>显示整张图片(&amp;W)</translation>
    </message>
    <message>
        <source>Forget crop, turn, selection and marks</source>
        <translation>取消裁剪、旋转、选区和标注</translation>
    </message>
    <message>
        <source>&amp;Image Text</source>
        <translation>将文字转为图片(&amp;I)</translation>
    </message>
    <message>
        <source>Make the text the picture</source>
        <translation>将文字作为图片</translation>
    </message>
    <message>
        <source>&amp;Background Colour…</source>
        <translation>背景颜色(&amp;B)…</translation>
    </message>
    <message>
        <source>Choose the background colour</source>
        <translation>选择背景颜色</translation>
    </message>
    <message>
        <source>Text &amp;Colour…</source>
        <translation>文字颜色(&amp;C)…</translation>
    </message>
    <message>
        <source>Choose the colour of the text</source>
        <translation>选择文字的颜色</translation>
    </message>
    <message>
        <source>Skarnel &amp;Help</source>
        <translation>Skarnel 帮助(&amp;H)</translation>
    </message>
    <message>
        <source>Open the product&apos;s page</source>
        <translation>打开产品页面</translation>
    </message>
    <message>
        <source>&amp;About Skarnel</source>
        <translation>关于 Skarnel(&amp;A)</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>文件(&amp;F)</translation>
    </message>
    <message>
        <source>Open &amp;Recent</source>
        <translation>打开最近的文件(&amp;R)</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>编辑(&amp;E)</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>视图(&amp;V)</translation>
    </message>
    <message>
        <source>A&amp;ppearance</source>
        <translation>外观(&amp;P)</translation>
    </message>
    <message>
        <source>&amp;Tools</source>
        <translation>工具(&amp;T)</translation>
    </message>
    <message>
        <source>Te&amp;xt</source>
        <translation>文字(&amp;X)</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>帮助(&amp;H)</translation>
    </message>
    <message>
        <source>Tools</source>
        <translation>工具</translation>
    </message>
    <message>
        <source>Zoom</source>
        <translation>缩放</translation>
    </message>
    <message>
        <source>&amp;Undo %1</source>
        <translation>撤销(&amp;U)：%1</translation>
    </message>
    <message>
        <source>&amp;Redo %1</source>
        <translation>重做(&amp;R)：%1</translation>
    </message>
    <message>
        <source>%1 %</source>
        <translation>%1%</translation>
    </message>
    <message>
        <source>Pas&amp;te Picture</source>
        <translation>粘贴图片(&amp;T)</translation>
    </message>
    <message>
        <source>Zoom: %1 %</source>
        <translation>缩放：%1%</translation>
    </message>
</context>
<context>
    <name>skarnel::MoreLooks</name>
    <message>
        <source>More looks</source>
        <translation>更多样式</translation>
    </message>
</context>
<context>
    <name>skarnel::PresetStrip</name>
    <message>
        <source>Mirror</source>
        <translation>镜面</translation>
    </message>
    <message>
        <source>Subtle Floor</source>
        <translation>淡雅地面</translation>
    </message>
    <message>
        <source>Glossy Table</source>
        <translation>光亮桌面</translation>
    </message>
    <message>
        <source>Tall Mirror</source>
        <translation>落地镜</translation>
    </message>
    <message>
        <source>Still Water</source>
        <translation>静水</translation>
    </message>
    <message>
        <source>Stage</source>
        <translation>舞台</translation>
    </message>
    <message>
        <source>Floating</source>
        <translation>悬浮</translation>
    </message>
    <message>
        <source>Shop Window</source>
        <translation>橱窗</translation>
    </message>
    <message>
        <source>Card to the Left</source>
        <translation>左向卡片</translation>
    </message>
    <message>
        <source>Card to the Right</source>
        <translation>右向卡片</translation>
    </message>
    <message>
        <source>Cover</source>
        <translation>封面</translation>
    </message>
    <message>
        <source>Twin</source>
        <translation>双生</translation>
    </message>
    <message>
        <source>Looks</source>
        <translation>样式</translation>
    </message>
    <message>
        <source>Save the settings as a look</source>
        <translation>将设置保存为样式</translation>
    </message>
    <message>
        <source>Save as Look</source>
        <translation>保存为样式</translation>
    </message>
    <message>
        <source>Return uses a look; F2 renames and Delete removes one of your own</source>
        <translation>按回车使用样式；按 F2 重命名、按 Delete 删除自己的样式</translation>
    </message>
    <message>
        <source>&amp;Save Settings as Look</source>
        <translation>将设置保存为样式(&amp;S)</translation>
    </message>
    <message>
        <source>&amp;Rename</source>
        <translation>重命名(&amp;R)</translation>
    </message>
    <message>
        <source>Re&amp;move</source>
        <translation>移除(&amp;M)</translation>
    </message>
    <message>
        <source>Rename “%1”</source>
        <translation>重命名“%1”</translation>
    </message>
    <message>
        <source>Remove “%1”</source>
        <translation>移除“%1”</translation>
    </message>
</context>
<context>
    <name>skarnel::RecipeCommands</name>
    <message>
        <source>Save the settings, the background and the text as a file</source>
        <translation>将设置、背景和文字保存为文件</translation>
    </message>
    <message>
        <source>Use the settings, the background and the text of a recipe</source>
        <translation>使用配方中的设置、背景和文字</translation>
    </message>
    <message>
        <source>Use the settings of a recipe, or of a picture that carries one</source>
        <translation>使用配方或含有配方的图片中的设置</translation>
    </message>
    <message>
        <source>Save Recipe</source>
        <translation>保存配方</translation>
    </message>
    <message>
        <source>Recipes (*.skarnel)</source>
        <translation>配方 (*.skarnel)</translation>
    </message>
    <message>
        <source>Open Recipe</source>
        <translation>打开配方</translation>
    </message>
    <message>
        <source>Take Settings From</source>
        <translation>从文件获取设置</translation>
    </message>
    <message>
        <source>Recipes and pictures (*.skarnel *.tif *.tiff *.png *.jpg *.jpeg)</source>
        <translation>配方和图片 (*.skarnel *.tif *.tiff *.png *.jpg *.jpeg)</translation>
    </message>
    <message>
        <source>The recipe cannot be saved: %1.</source>
        <translation>无法保存配方：%1。</translation>
    </message>
    <message>
        <source>“%1”: %2.</source>
        <translation>“%1”：%2。</translation>
    </message>
    <message>
        <source>The text of “%1” cannot be made a picture.</source>
        <translation>“%1”中的文字无法转为图片。</translation>
    </message>
    <message>
        <source>Recipe</source>
        <translation>配方</translation>
    </message>
    <message>
        <source>The settings stay as they are while a panel is open.</source>
        <translation>对话框打开时，设置保持不变。</translation>
    </message>
    <message>
        <source>Taken Settings</source>
        <translation>获取的设置</translation>
    </message>
    <message>
        <source>Save Reci&amp;pe…</source>
        <translation>保存配方(&amp;P)…</translation>
    </message>
    <message>
        <source>Ope&amp;n Recipe…</source>
        <translation>打开配方(&amp;N)…</translation>
    </message>
    <message>
        <source>&amp;Take Settings From…</source>
        <translation>从文件获取设置(&amp;T)…</translation>
    </message>
    <message>
        <source>“%1” was saved without its settings: %2.</source>
        <translation>“%1”已保存，但不含设置：%2。</translation>
    </message>
</context>
<context>
    <name>skarnel::SaveOptionsView</name>
    <message>
        <source>Format</source>
        <translation>格式</translation>
    </message>
    <message>
        <source>&amp;Format:</source>
        <translation>格式(&amp;F)：</translation>
    </message>
    <message>
        <source>Resolution:</source>
        <translation>分辨率：</translation>
    </message>
    <message>
        <source>&amp;Keep the settings inside the file</source>
        <translation>在文件中保留设置(&amp;K)</translation>
    </message>
    <message>
        <source>“Take Settings From” finds them there; for a picture of text they hold the text</source>
        <translation>“从文件获取设置”可以读取它们；对于文字图片，其中包含文字</translation>
    </message>
    <message>
        <source>none, as the source</source>
        <translation>无，与源图片相同</translation>
    </message>
    <message>
        <source>%1 dpi, as the source</source>
        <translation>%1 dpi，与源图片相同</translation>
    </message>
    <message>
        <source>Compression</source>
        <translation>压缩</translation>
    </message>
    <message>
        <source>None</source>
        <translation>无</translation>
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
        <translation>压缩(&amp;C)：</translation>
    </message>
    <message>
        <source>Fast</source>
        <translation>快速</translation>
    </message>
    <message>
        <source>Small</source>
        <translation>更小</translation>
    </message>
    <message>
        <source>Quality</source>
        <translation>质量</translation>
    </message>
    <message>
        <source>Quality, number</source>
        <translation>质量，数值</translation>
    </message>
    <message>
        <source>&amp;Quality:</source>
        <translation>质量(&amp;Q)：</translation>
    </message>
</context>
<context>
    <name>skarnel::SettingsPanel</name>
    <message>
        <source>Height</source>
        <translation>高度</translation>
    </message>
    <message>
        <source>Height of the reflection, in percent of the picture&apos;s</source>
        <translation>倒影的高度，以图片高度的百分比表示</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>宽度</translation>
    </message>
    <message>
        <source>Widening of the reflection at its far edge, in percent of the picture&apos;s width on each side</source>
        <translation>倒影远端每侧的加宽量，以图片宽度的百分比表示</translation>
    </message>
    <message>
        <source>Gap</source>
        <translation>间距</translation>
    </message>
    <message>
        <source>Gap between picture and reflection, in percent of the reflection&apos;s height</source>
        <translation>图片与倒影之间的间距，以倒影高度的百分比表示</translation>
    </message>
    <message>
        <source>Start</source>
        <translation>起点</translation>
    </message>
    <message>
        <source>Lift of the fade, in percent of the reflection&apos;s height</source>
        <translation>渐隐的上移量，以倒影高度的百分比表示</translation>
    </message>
    <message>
        <source>Gradient</source>
        <translation>渐变</translation>
    </message>
    <message>
        <source>Steepness of the fade, in tenths of its exponent</source>
        <translation>渐隐的陡度，以指数的十分之一为单位</translation>
    </message>
    <message>
        <source>Opacity</source>
        <translation>不透明度</translation>
    </message>
    <message>
        <source>Peak opacity of the reflection; above 255 bright parts turn dark</source>
        <translation>倒影的最大不透明度；超过 255 时明亮部分会变暗</translation>
    </message>
    <message>
        <source>Turn</source>
        <translation>转动</translation>
    </message>
    <message>
        <source>Turn of the whole picture in perspective: level at 0, 50 and 100, strongest at 25 and 75</source>
        <translation>整体的透视转动：0、50 和 100 时为正面，25 和 75 时最大</translation>
    </message>
    <message>
        <source>&amp;Reset</source>
        <translation>重置(&amp;R)</translation>
    </message>
    <message>
        <source>Return every setting to its default</source>
        <translation>将所有设置恢复为默认值</translation>
    </message>
    <message>
        <source>Settings</source>
        <translation>设置</translation>
    </message>
    <message>
        <source>Reflection</source>
        <translation>倒影</translation>
    </message>
    <message>
        <source>Fade</source>
        <translation>渐隐</translation>
    </message>
    <message>
        <source>Perspective</source>
        <translation>透视</translation>
    </message>
    <message>
        <source>%1, number</source>
        <translation>%1，数值</translation>
    </message>
    <message>
        <source>Background</source>
        <translation>背景</translation>
    </message>
    <message>
        <source>Background colour</source>
        <translation>背景颜色</translation>
    </message>
    <message>
        <source>Choose the colour behind the picture</source>
        <translation>选择图片后面的颜色</translation>
    </message>
    <message>
        <source>Background colour as #RRGGBB</source>
        <translation>以 #RRGGBB 表示的背景颜色</translation>
    </message>
    <message>
        <source>The background colour as #RRGGBB</source>
        <translation>以 #RRGGBB 表示的背景颜色</translation>
    </message>
    <message>
        <source>Lay the background colour under the result, so that it is saved too</source>
        <translation>将背景颜色铺在结果下面，并一同保存</translation>
    </message>
    <message>
        <source>Fill with Background</source>
        <translation>用背景填充</translation>
    </message>
    <message>
        <source>Fi&amp;ll the result with it</source>
        <translation>用此颜色填充结果(&amp;L)</translation>
    </message>
</context>
<context>
    <name>skarnel::TextBar</name>
    <message>
        <source>&amp;Image Text</source>
        <translation>转为图片(&amp;I)</translation>
    </message>
    <message>
        <source>Make the text the picture</source>
        <translation>将文字作为图片</translation>
    </message>
    <message>
        <source>Typeface</source>
        <translation>字体</translation>
    </message>
    <message>
        <source>Text size</source>
        <translation>字号</translation>
    </message>
    <message>
        <source>Bo&amp;ld</source>
        <translation>粗体(&amp;L)</translation>
    </message>
    <message>
        <source>Bold</source>
        <translation>粗体</translation>
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
        <translation>下划线(&amp;U)</translation>
    </message>
    <message>
        <source>Underline</source>
        <translation>下划线</translation>
    </message>
    <message>
        <source>Text colour</source>
        <translation>文字颜色</translation>
    </message>
    <message>
        <source>Align L&amp;eft</source>
        <translation>左对齐(&amp;E)</translation>
    </message>
    <message>
        <source>Align left</source>
        <translation>左对齐</translation>
    </message>
    <message>
        <source>Ce&amp;ntre</source>
        <translation>居中(&amp;N)</translation>
    </message>
    <message>
        <source>Centre</source>
        <translation>居中</translation>
    </message>
    <message>
        <source>Align &amp;Right</source>
        <translation>右对齐(&amp;R)</translation>
    </message>
    <message>
        <source>Align right</source>
        <translation>右对齐</translation>
    </message>
</context>
<context>
    <name>skarnel::TextEditor</name>
    <message>
        <source>Text to image</source>
        <translation>要转为图片的文字</translation>
    </message>
    <message>
        <source>Type and style text here; Image Text makes it the picture</source>
        <translation>在此输入文字并设置格式；“转为图片”将其变为图片</translation>
    </message>
</context>
<context>
    <name>skarnel::UserPresets</name>
    <message>
        <source>My Look</source>
        <translation>我的样式</translation>
    </message>
</context>
<context>
    <name>skarnel::Viewer</name>
    <message>
        <source>Picture</source>
        <translation>图片</translation>
    </message>
    <message>
        <source>Text on the picture</source>
        <translation>图片上的文字</translation>
    </message>
    <message>
        <source>Text</source>
        <translation>文字</translation>
    </message>
    <message>
        <source>The picture with its reflection, as it would be saved; Space shows the picture alone</source>
        <translation>图片及其倒影，即将保存的样子；按空格键只显示图片</translation>
    </message>
</context>
<context>
    <name>skarnel::ViewerScrollBars</name>
    <message>
        <source>Picture, sideways</source>
        <translation>图片，水平</translation>
    </message>
    <message>
        <source>Picture, up and down</source>
        <translation>图片，垂直</translation>
    </message>
</context>
</TS>

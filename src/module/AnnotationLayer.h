// The annotation layer module for hosts: every exported class, interface, record, enumeration and
// free function of the module, with the host types they use. Installed as
// <annotationlayer/AnnotationLayer.h>; link with AnnotationLayer::annotationlayer.
#ifndef ANNOTATIONLAYER_H
#define ANNOTATIONLAYER_H

// Host SDK.
#include "AnnotationRenderer.h"
#include "AnnotationScene.h"
#include "EventKernel.h"
#include "EventModule.h"
#include "EventObject.h"
#include "GeometryData.h"
#include "AnnotationFeature.h"
#include "AnnotationGroup.h"
#include "AnnotationModule.h"
#include "FeatureBrushStyle.h"
#include "FeatureIconStyle.h"
#include "FeatureLabelStyle.h"
#include "FeaturePenStyle.h"
#include "FeatureStyle.h"
#include "FeatureStyleSet.h"
#include "FeatureStyleTypes.h"
#include "IAnnotationFeature.h"
#include "IAnnotationGroup.h"
#include "IAnnotationModule.h"
#include "GeometryDataType.h"
#include "IObject.h"
#include "IZuModule.h"
#include "ObjectCreator.h"
#include "SceneDrawable.h"
#include "ScenePainter.h"
#include "Vector3D.h"
#include "XEncoder.h"
#include "ZuCoreApplication.h"
#include "ZuLog.h"

// Module frame and shared conversions.
#include "AnnotationLayerExport.h"
#include "AnnotationLayerNS.h"
#include "AnnotationLayerTypes.h"
#include "AnnotationSchema.h"
#include "GeometryBlob.h"
#include "IAnnotationLayerModule.h"

// Data model, records and observers.
#include "AnnotationDBObjectNotifier.h"
#include "ChangeMask.h"
#include "EnclosureOption.h"
#include "FeatureOption.h"
#include "FolderOption.h"
#include "IAnnotationDBDataModel.h"
#include "IAnnotationDBObjectNotifier.h"
#include "IAnnotationDBObjectObserver.h"
#include "IAnnotationDBObjectVisitor.h"
#include "LayerOption.h"
#include "NodeAttribute.h"
#include "ZuFieldSetObject.h"
#include "FeatureFieldSet.h"
#include "StyleJson.h"
#include "VariantTextCodec.h"

// Batch tools and the node cache.
#include "FeatureBatchImporter.h"
#include "LayerBatchCopier.h"
#include "LayerBatchDeleter.h"
#include "LayerBatchTransfer.h"
#include "NodeCacheCalculator.h"
#include "NodeOrder.h"
#include "NodeOrderRebuilder.h"

// Auxiliary databases.
#include "NameRecorder.h"
#include "SpatialiteEditorDB.h"
#include "SpatialiteNameDB.h"

// Runtime spatial engine.
#include "AnnotationEntity.h"
#include "IAnnotationSpatialEngine.h"
#include "IAnnotationSpatialEngineListener.h"

// Background tasks.
#include "CriticalLock.h"
#include "Task.h"
#include "TaskEx.h"
#include "TaskExUser.h"

#endif  // ANNOTATIONLAYER_H
